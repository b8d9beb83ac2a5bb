#include <poll.h>

#include <algorithm>

#include "platform/clock.h"

namespace Nuv::Platform {

// poll and not select: a host with a thousand open files has descriptors that select cannot hold.
WaitEnd Clock::WaitReady(Handle handle, Readiness readiness, Deadline deadline,
                         const Interrupts& interrupts) {
  using std::chrono::milliseconds;
  const short events = readiness == Readiness::kOutput ? POLLOUT : POLLIN;
  pollfd entry{static_cast<int>(handle), events, 0};
  // By the system's time, also for a clock that does not run by itself.
  const Deadline end = Clock::Now() + (deadline - Now());
  for (;;) {
    if (interrupts.Raised()) return WaitEnd::kInterrupted;
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::Now());
    const milliseconds slice =
        std::clamp(left, milliseconds(0), std::min(kSlice, interrupts.Patience()));
    const int ready = poll(&entry, 1, static_cast<int>(slice.count()));
    if (ready > 0) return WaitEnd::kReady;
    // A signal that came is none of ours.
    if (ready == 0 ? left <= slice : Clock::Now() >= end) return WaitEnd::kTimeout;
  }
}

}  // namespace Nuv::Platform
