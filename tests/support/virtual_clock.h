#ifndef NUV_TESTS_VIRTUAL_CLOCK_H_
#define NUV_TESTS_VIRTUAL_CLOCK_H_

#include <algorithm>
#include <chrono>
#include <optional>

#include "platform/clock.h"

// The other side of what is waited for: a device that follows a script, or the far end of a
// connection. It is served on the thread that waits.
class VirtualPeer {
 public:
  virtual ~VirtualPeer() = default;

  // Does all that there is to do at `now`. When it has something to do by itself next; never.
  virtual std::optional<Nuv::Platform::Deadline> Serve(Nuv::Platform::Deadline now) = 0;

  // Whether the handle is ready. Of a handle of the system the system tells, which may take a
  // moment of real time to move bytes from one end to the other.
  virtual bool IsReady(Nuv::Platform::Handle handle, Nuv::Platform::Readiness readiness) {
    Nuv::Platform::Clock& clock = Nuv::Platform::SystemClock();
    const auto settled = clock.Now() + std::chrono::milliseconds(20);
    return clock.WaitReady(handle, readiness, settled, {}) == Nuv::Platform::WaitEnd::kReady;
  }
};

// The other side does nothing by itself.
class IdlePeer final : public VirtualPeer {
 public:
  std::optional<Nuv::Platform::Deadline> Serve(Nuv::Platform::Deadline) override { return {}; }
};

// A clock that jumps: when a thread waits, its peer is served until it has nothing to do at the
// present time, and only then time goes on to what either side does next. A day of waiting takes no
// time. Without a peer, waits for a handle are real ones.
//
// Thread-safety: none: both sides are on one thread.
class VirtualClock final : public Nuv::Platform::Clock {
 public:
  using Deadline = Nuv::Platform::Deadline;

  explicit VirtualClock(VirtualPeer* peer = nullptr) : peer_(peer) {}
  void SetPeer(VirtualPeer* peer) { peer_ = peer; }
  int64_t NowMs() const { return now_ / std::chrono::milliseconds(1); }

  Deadline Now() const override { return now_; }
  void SleepFor(std::chrono::milliseconds duration) override {
    Pass(now_ + duration, [] { return false; });
  }
  bool WaitFor(std::chrono::milliseconds duration, Nuv::Platform::Interrupt& interrupt) override {
    Pass(now_ + duration, [&] { return interrupt.Raised(); });
    return interrupt.Raised();
  }
  Nuv::Platform::WaitEnd WaitReady(Nuv::Platform::Handle handle, Nuv::Platform::Readiness readiness,
                                   Deadline deadline,
                                   const Nuv::Platform::Interrupts& interrupts) override {
    using Nuv::Platform::WaitEnd;
    if (peer_ == nullptr) return Clock::WaitReady(handle, readiness, deadline, interrupts);
    bool ready = false;
    Pass(deadline,
         [&] { return interrupts.Raised() || (ready = peer_->IsReady(handle, readiness)); });
    if (interrupts.Raised()) return WaitEnd::kInterrupted;
    return ready ? WaitEnd::kReady : WaitEnd::kTimeout;
  }

 private:
  // Lets time go on until `over`, or to `end`.
  template <class Over>
  void Pass(Deadline end, Over over) {
    for (;;) {
      const auto next = peer_ != nullptr ? peer_->Serve(now_) : std::nullopt;
      if (over() || now_ >= end) return;
      now_ = next && *next > now_ ? std::min(end, *next) : end;
    }
  }

  VirtualPeer* peer_;
  Deadline now_{0};
};

#endif  // NUV_TESTS_VIRTUAL_CLOCK_H_
