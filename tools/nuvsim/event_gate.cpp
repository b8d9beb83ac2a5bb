#include "nuvsim/event_gate.h"

namespace nuvsim {

void EventGate::Notify() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++events_;
  }
  changed_.notify_all();
}

bool EventGate::WaitUntil(const std::function<bool()>& predicate,
                          std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    const std::uint64_t seen = events_;
    lock.unlock();  // the predicate observes printers, whose changes end in Notify()
    if (predicate()) return true;
    lock.lock();
    if (!changed_.wait_until(lock, deadline, [&] { return events_ != seen; })) return false;
  }
}

}  // namespace nuvsim
