#ifndef NUV_PLATFORM_INTERRUPT_H_
#define NUV_PLATFORM_INTERRUPT_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace Nuv::Platform {

// A point in a clock's time.
using Deadline = std::chrono::nanoseconds;

// Ends waiting for good: what waits on it returns at once when it is raised, and from then on. One
// that is derived may be raised by what it looks at itself, such as a time limit.
//
// Thread-safety: safe.
class Interrupt {
 public:
  Interrupt() = default;
  virtual ~Interrupt() = default;
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  void Raise();
  virtual bool Raised() const { return raised_; }

  // How long a wait may last before Raised is asked again.
  virtual std::chrono::milliseconds Patience() const { return std::chrono::hours(24); }

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
  std::chrono::milliseconds Patience() const {
    return call != nullptr ? call->Patience() : std::chrono::hours(24);
  }
};

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_INTERRUPT_H_
