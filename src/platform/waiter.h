#ifndef NUV_PLATFORM_WAITER_H_
#define NUV_PLATFORM_WAITER_H_

#include <algorithm>

#include "platform/clock.h"

namespace Nuv::Platform {

// Raised by itself when the time is over.
class TimeLimit final : public Interrupt {
 public:
  TimeLimit(const Clock& clock, std::chrono::milliseconds limit)
      : clock_(clock), end_(clock.Now() + limit) {}

  bool Raised() const override { return clock_.Now() >= end_; }
  std::chrono::milliseconds Patience() const override {
    return std::max(std::chrono::milliseconds(1),
                    std::chrono::ceil<std::chrono::milliseconds>(end_ - clock_.Now()));
  }

 private:
  const Clock& clock_;
  const Deadline end_;
};

// How the links of one channel wait for a printer: on the channel's clock, and no longer than the
// channel itself and the call under way want.
//
// Thread-safety: GiveUp and givenUp are safe; the rest is used under the channel's lock.
class Waiter {
 public:
  // `clock` outlives the waiter.
  explicit Waiter(Clock& clock = SystemClock()) : clock_(clock) {}
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;

  Clock& GetClock() const { return clock_; }
  Deadline In(int64_t ms) const { return clock_.Now() + std::chrono::milliseconds(ms); }

  // True when `handle` is ready; see Clock::WaitReady.
  bool Until(Deadline deadline, Handle handle, Readiness readiness) const {
    return clock_.WaitReady(handle, readiness, deadline, interrupts_) == WaitEnd::kReady;
  }

  // Whether nobody waits any more: the channel, or the call under way.
  bool Over() const { return interrupts_.Raised(); }

  // No wait from now on, and the one under way ends within Clock::kSlice.
  void GiveUp() { givenUp_.Raise(); }
  bool GivenUp() const { return givenUp_.Raised(); }

  // While it lives, the interrupt of one call (may be null) ends the waits too.
  class Call {
   public:
    Call(Waiter& waiter, const Interrupt* interrupt) : waiter_(waiter) {
      waiter_.interrupts_.call = interrupt;
    }
    ~Call() { waiter_.interrupts_.call = nullptr; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    Waiter& waiter_;
  };

 private:
  Clock& clock_;
  Interrupt givenUp_;
  Interrupts interrupts_{&givenUp_, nullptr};
};

// Waits on the system's clock, which nothing ends.
inline Waiter& SystemWaiter() {
  static Waiter* const kWaiter = new Waiter;
  return *kWaiter;
}

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_WAITER_H_
