// Figures: taken from many runs, and printed beside their limits.
#ifndef NUV_BENCH_FIGURES_H_
#define NUV_BENCH_FIGURES_H_

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace Bench {

// Runs `body` `count` times and returns each run's nanoseconds, sorted.
std::vector<double> Sample(int count, const std::function<void()>& body);

// Value at `share` (0 to 1) of sorted samples.
double Quantile(const std::vector<double>& sorted, double share);

// One line of the report: what was measured and, above 0, the most it may be.
void Report(const std::string& what, double value, const std::string& unit, double limit = 0);

// Reports the floor of pacing: how much longer than `length` the system makes `count` pauses.
void ReportBarePauses(std::chrono::milliseconds length, int count);

// True once a reported value was above its limit.
bool AnyOverLimit();

}  // namespace Bench

#endif  // NUV_BENCH_FIGURES_H_
