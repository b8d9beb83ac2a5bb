#include "platform/clock.h"

#include <thread>

namespace Nuv::Platform {
namespace {

class SteadyClock final : public Clock {
 public:
  std::chrono::nanoseconds Now() const override {
    return std::chrono::steady_clock::now().time_since_epoch();
  }
  void SleepFor(std::chrono::milliseconds duration) override {
    std::this_thread::sleep_for(duration);
  }
};

}  // namespace

Clock& SystemClock() {
  // Never destroyed: a status thread may still sleep on it when the process ends.
  static SteadyClock* const clock = new SteadyClock;
  return *clock;
}

}  // namespace Nuv::Platform
