#include "bench/figures.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <thread>

namespace Bench {
namespace {

bool g_overLimit = false;

}  // namespace

std::vector<double> Sample(int count, const std::function<void()>& body) {
  using Clock = std::chrono::steady_clock;
  std::vector<double> samples;
  samples.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const Clock::time_point start = Clock::now();
    body();
    samples.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count());
  }
  std::sort(samples.begin(), samples.end());
  return samples;
}

double Quantile(const std::vector<double>& sorted, double share) {
  const auto last = static_cast<double>(sorted.size() - 1);
  return sorted[static_cast<size_t>(share * last)];
}

void Report(const std::string& what, double value, const std::string& unit, double limit) {
  std::printf("  %-58s %12.3f %-8s", what.c_str(), value, unit.c_str());
  if (limit > 0) {
    const bool over = value > limit;
    g_overLimit = g_overLimit || over;
    std::printf(" limit %8.3f  %s", limit, over ? "OVER" : "ok");
  }
  std::printf("\n");
  std::fflush(stdout);
}

void ReportBarePauses(std::chrono::milliseconds length, int count) {
  const std::vector<double> pauses = Sample(count, [&] { std::this_thread::sleep_for(length); });
  const double ms = std::accumulate(pauses.begin(), pauses.end(), 0.0) / 1e6;
  Report("floor: pauses of " + std::to_string(length.count()) + " ms by themselves",
         ms / static_cast<double>(length.count() * count), "times");
}

bool AnyOverLimit() { return g_overLimit; }

}  // namespace Bench
