#include <winsock2.h>

#include <algorithm>

#include "platform/clock.h"

namespace Nuv::Platform {
namespace {

// select and not WSAPoll, which on older systems does not tell that a connection could not be made.
bool SocketReady(SOCKET socket, bool forOutput, std::chrono::milliseconds limit) {
  fd_set awaited;
  FD_ZERO(&awaited);
  FD_SET(socket, &awaited);
  // That a connection could not be made is told here alone.
  fd_set failed = awaited;
  timeval time{0, static_cast<long>(std::chrono::microseconds(limit).count())};
  return select(0, forOutput ? nullptr : &awaited, forOutput ? &awaited : nullptr, &failed, &time) >
         0;
}

}  // namespace

WaitEnd Clock::WaitReady(Handle handle, Readiness readiness, Deadline deadline,
                         const Interrupts& interrupts) {
  using std::chrono::milliseconds;
  // By the system's time, also for a clock that does not run by itself.
  const Deadline end = Clock::Now() + (deadline - Now());
  for (;;) {
    if (interrupts.Raised()) return WaitEnd::kInterrupted;
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::Now());
    const milliseconds slice =
        std::clamp(left, milliseconds(0), std::min(kSlice, interrupts.Patience()));
    const bool ready =
        readiness == Readiness::kEvent
            ? WaitForSingleObject(reinterpret_cast<HANDLE>(handle),
                                  static_cast<DWORD>(slice.count())) == WAIT_OBJECT_0
            : SocketReady(static_cast<SOCKET>(handle), readiness == Readiness::kOutput, slice);
    if (ready) return WaitEnd::kReady;
    if (left <= slice) return WaitEnd::kTimeout;
  }
}

}  // namespace Nuv::Platform
