#ifndef NUV_PLATFORM_CLOCK_H_
#define NUV_PLATFORM_CLOCK_H_

#include <chrono>

#include "platform/interrupt.h"

namespace Nuv::Platform {

// Time as product code takes it; tests replace it, so that a minute of pacing runs in no time.
//
// Thread-safety: safe.
class Clock {
 public:
  virtual ~Clock() = default;

  // Monotonic time since an arbitrary start.
  virtual std::chrono::nanoseconds Now() const = 0;

  // Blocks the calling thread for at least `duration`.
  virtual void SleepFor(std::chrono::milliseconds duration) = 0;

  // As SleepFor, but over at once when `interrupt` is raised. True when it is.
  virtual bool WaitFor(std::chrono::milliseconds duration, Interrupt& interrupt) {
    return interrupt.WaitFor(duration);
  }
};

// The system's clock; lives as long as the process.
Clock& SystemClock();

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_CLOCK_H_
