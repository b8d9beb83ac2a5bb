#include "platform/interrupt.h"

#include <algorithm>

namespace Nuv::Platform {

void Interrupt::Raise() {
  const std::lock_guard<std::mutex> lock(mutex_);
  raised_ = true;
  changed_.notify_all();
}

// No lock is held while Raised is asked, which may ask the host.
bool Interrupt::WaitFor(std::chrono::milliseconds duration) {
  using Steady = std::chrono::steady_clock;
  const auto end = Steady::now() + duration;
  while (!Raised()) {
    if (Steady::now() >= end) return false;
    const auto next = std::min(end, Steady::now() + Patience());
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_until(lock, next, [this] { return raised_.load(); });
  }
  return true;
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
