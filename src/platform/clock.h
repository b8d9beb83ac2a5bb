#ifndef NUV_PLATFORM_CLOCK_H_
#define NUV_PLATFORM_CLOCK_H_

#include <chrono>
#include <cstdint>

#include "platform/interrupt.h"

namespace Nuv::Platform {

// What the system waits for: a descriptor, a socket, an event.
using Handle = intptr_t;

// When a handle is ready. The end or the failure of what is behind it counts as ready too.
enum class Readiness {
  kInput,   // there is something to read
  kOutput,  // something can be written; of a connection being made: it stands
  kEvent    // an event of Windows is signalled
};

enum class WaitEnd { kReady, kTimeout, kInterrupted };

// Time as product code takes it, and whatever waits for the other side of a handle. This one is the
// system's; tests replace it, and may replace the other side along with it.
//
// Thread-safety: safe.
class Clock {
 public:
  // The longest that a raised interrupt goes unseen by WaitReady.
  static constexpr std::chrono::milliseconds kSlice{200};

  virtual ~Clock() = default;

  // Monotonic time since an arbitrary start.
  virtual Deadline Now() const { return std::chrono::steady_clock::now().time_since_epoch(); }

  // Blocks the calling thread for at least `duration`.
  virtual void SleepFor(std::chrono::milliseconds duration);

  // As SleepFor, but over at once when `interrupt` is raised. True when it is.
  virtual bool WaitFor(std::chrono::milliseconds duration, Interrupt& interrupt) {
    return interrupt.WaitFor(duration);
  }

  // Blocks until `handle` is ready; looks once when `deadline` has passed already. Interrupted, it
  // does not look. A signal that the host handles does not end it.
  virtual WaitEnd WaitReady(Handle handle, Readiness readiness, Deadline deadline,
                            const Interrupts& interrupts);
};

// The system's clock; lives as long as the process.
Clock& SystemClock();

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_CLOCK_H_
