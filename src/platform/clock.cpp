#include "platform/clock.h"

#include <thread>

namespace Nuv::Platform {

void Clock::SleepFor(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }

Clock& SystemClock() {
  // Never destroyed: a status thread may still sleep on it when the process ends.
  static Clock* const kClock = new Clock;
  return *kClock;
}

}  // namespace Nuv::Platform
