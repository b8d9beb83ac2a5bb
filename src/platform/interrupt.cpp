#include "platform/interrupt.h"

namespace Nuv::Platform {

void Interrupt::Raise() {
  const std::lock_guard<std::mutex> lock(mutex_);
  raised_ = true;
  changed_.notify_all();
}

bool Interrupt::WaitFor(std::chrono::milliseconds duration) {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, duration, [this] { return Raised(); });
}

bool Interrupt::WaitUntil(const std::function<bool()>& over) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [&] { return raised_ || over(); });
  return raised_;
}

void Interrupt::Recheck() {
  const std::lock_guard<std::mutex> lock(mutex_);
  changed_.notify_all();
}

}  // namespace Nuv::Platform
