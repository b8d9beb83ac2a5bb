#ifndef NUV_PRINTER_CALL_LIMITS_H_
#define NUV_PRINTER_CALL_LIMITS_H_

#include "nuvprinter/nuvprinter.h"
#include "platform/clock.h"

namespace Nuv::Printer {

// How long one call may last: until its time limit, until the host does not want it any more, or
// until it is cancelled (Raise).
//
// Thread-safety: Raise is safe; all else runs on the thread of the call, where the host is asked.
class CallLimits final : public Platform::Interrupt {
 public:
  // `call` may be null; a limit of 0 is `usualMs`, and if that is 0 too there is none. `clock`
  // outlives it. Throws Failure for what no call can be.
  CallLimits(const nuv_call* call, int usualMs, const Platform::Clock& clock);

  // From now on it may last that long.
  void Restart(std::chrono::milliseconds limit) { end_ = clock_.Now() + limit; }

  // Until `end`, for whoever works for the call on another thread.
  CallLimits(Platform::Deadline end, const Platform::Clock& clock) : clock_(clock), end_(end) {}

  bool Raised() const override { return Cancelled() || clock_.Now() >= end_; }
  std::chrono::milliseconds Patience() const override;

  // Whether it is over before its time. Asks the host, but not more often than every 100 ms.
  bool Cancelled() const;

  // What a call is whose limits are over.
  nuv_result Why() const { return Cancelled() ? NUV_RESULT_CANCELLED : NUV_RESULT_TIME_LIMIT; }

  Platform::Deadline End() const { return end_; }

 private:
  const Platform::Clock& clock_;
  Platform::Deadline end_;
  nuv_still_wanted stillWanted_ = nullptr;
  void* user_ = nullptr;
  mutable Platform::Deadline askAgain_{0};
  mutable bool unwanted_ = false;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_CALL_LIMITS_H_
