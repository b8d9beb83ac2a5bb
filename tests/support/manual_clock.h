#ifndef NUV_TESTS_MANUAL_CLOCK_H_
#define NUV_TESTS_MANUAL_CLOCK_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/clock.h"

// A clock on which every sleep is over at once and counted. A wait that can be interrupted lasts
// until the test advances the clock far enough.
class ManualClock final : public Nuv::Platform::Clock {
 public:
  std::chrono::nanoseconds Now() const override { return std::chrono::milliseconds(slept_); }
  void SleepFor(std::chrono::milliseconds duration) override {
    slept_ += duration.count();
    if (meanwhile) meanwhile();
  }
  int64_t SleptMs() const { return slept_; }

  bool WaitFor(std::chrono::milliseconds duration, Nuv::Platform::Interrupt& interrupt) override {
    if (waitsPass) {
      SleepFor(duration);
      return interrupt.Raised();
    }
    const std::chrono::nanoseconds end = Now() + duration;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      interrupt_ = &interrupt;
      waits_.push_back(duration.count());
      began_.notify_all();
    }
    const bool raised = interrupt.WaitUntil([&] { return Now() >= end; });
    const std::lock_guard<std::mutex> lock(mutex_);
    interrupt_ = nullptr;
    return raised;
  }

  std::function<void()> meanwhile;  // in every sleep, on the thread that sleeps

  bool waitsPass = false;  // as a sleep does

  // Blocks until the wait of this number, counted from 1, has begun. Its milliseconds.
  int64_t AwaitWait(size_t number) {
    std::unique_lock<std::mutex> lock(mutex_);
    began_.wait(lock, [&] { return waits_.size() >= number; });
    return waits_[number - 1];
  }
  void Advance(std::chrono::milliseconds duration) {
    slept_ += duration.count();
    const std::lock_guard<std::mutex> lock(mutex_);
    if (interrupt_ != nullptr) interrupt_->Recheck();
  }

 private:
  std::atomic<int64_t> slept_{0};
  std::mutex mutex_;
  std::condition_variable began_;
  Nuv::Platform::Interrupt* interrupt_ = nullptr;
  std::vector<int64_t> waits_;
};

#endif  // NUV_TESTS_MANUAL_CLOCK_H_
