#ifndef NUV_PLATFORM_INTERRUPT_H_
#define NUV_PLATFORM_INTERRUPT_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace Nuv::Platform {

// Ends waiting for good: what waits on it returns at once when it is raised, and from then on.
//
// Thread-safety: safe.
class Interrupt {
 public:
  void Raise();
  bool Raised() const { return raised_; }

  // Blocks for `duration` or until raised. True when raised.
  bool WaitFor(std::chrono::milliseconds duration);

  // Blocks until raised or `over` is true, which is looked at again after each Recheck: for clocks
  // that do not run by themselves. True when raised.
  bool WaitUntil(const std::function<bool()>& over);
  void Recheck();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::atomic<bool> raised_{false};
};

// What ends a wait on a handle before its time; each may be null.
struct Interrupts {
  const Interrupt* channel = nullptr;  // nobody waits for anything any more
  const Interrupt* call = nullptr;     // of the call under way

  bool Raised() const {
    return (channel != nullptr && channel->Raised()) || (call != nullptr && call->Raised());
  }
};

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_INTERRUPT_H_
