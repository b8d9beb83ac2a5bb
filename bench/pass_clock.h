#ifndef NUV_BENCH_PASS_CLOCK_H_
#define NUV_BENCH_PASS_CLOCK_H_

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "bench/figures.h"
#include "platform/clock.h"

namespace Bench {

// Notes how long the library works between one pause and the next, and sleeps or does not.
class PassClock final : public Nuv::Platform::Clock {
 public:
  explicit PassClock(bool sleeps) : sleeps_(sleeps) {}
  std::chrono::nanoseconds Now() const override {
    return std::chrono::steady_clock::now().time_since_epoch();
  }
  void SleepFor(std::chrono::milliseconds duration) override {
    if (passes_++ > 0) work_.push_back((Now() - lastEnd_).count());
    sleptMs_ += duration.count();
    if (sleeps_) Nuv::Platform::SystemClock().SleepFor(duration);
    lastEnd_ = Now();
  }
  int64_t SleptMs() const { return sleptMs_; }
  // Median microseconds of the passes from `first` on.
  double MedianUs(size_t first, size_t count) const {
    std::vector<double> window(work_.begin() + static_cast<std::ptrdiff_t>(first),
                               work_.begin() + static_cast<std::ptrdiff_t>(first + count));
    std::sort(window.begin(), window.end());
    return Quantile(window, 0.5) / 1000;
  }
  size_t Passes() const { return work_.size(); }
  void Reserve(size_t passes) { work_.reserve(passes); }

 private:
  const bool sleeps_;
  int64_t passes_ = 0;
  int64_t sleptMs_ = 0;
  std::chrono::nanoseconds lastEnd_{0};
  std::vector<int64_t> work_;
};

// How long `job` takes over the pauses that it makes on `clock`. The most it may be is 1.01.
inline double Pacing(const PassClock& clock, const std::function<void()>& job) {
  const std::chrono::nanoseconds start = clock.Now();
  job();
  const double ms = std::chrono::duration<double, std::milli>(clock.Now() - start).count();
  return ms / static_cast<double>(clock.SleptMs());
}

}  // namespace Bench

#endif  // NUV_BENCH_PASS_CLOCK_H_
