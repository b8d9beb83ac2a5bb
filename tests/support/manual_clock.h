#ifndef NUV_TESTS_MANUAL_CLOCK_H_
#define NUV_TESTS_MANUAL_CLOCK_H_

#include <atomic>
#include <chrono>

#include "platform/clock.h"

// A clock on which every sleep is over at once and counted.
class ManualClock final : public Nuv::Platform::Clock {
 public:
  std::chrono::nanoseconds Now() const override { return std::chrono::milliseconds(slept_); }
  void SleepFor(std::chrono::milliseconds duration) override {
    slept_ += duration.count();
    ++sleeps_;
  }
  int64_t SleptMs() const { return slept_; }
  int Sleeps() const { return sleeps_; }

 private:
  std::atomic<int64_t> slept_{0};
  std::atomic<int> sleeps_{0};
};

#endif  // NUV_TESTS_MANUAL_CLOCK_H_
