// The benchmarks. Each prints its own floor in the same run.
#ifndef NUV_BENCH_BENCHMARKS_H_
#define NUV_BENCH_BENCHMARKS_H_

#include <string>

namespace Bench {

void RunStatus();
// `nuvsim`: the simulator's program; `folder`: for the files that are sent.
void RunJob(const std::string& nuvsim, const std::string& folder);
void RunFirmware(const std::string& nuvsim, const std::string& folder);
void RunHandlers(const std::string& nuvsim, const std::string& folder);
void RunDiscovery();
void RunParser();
// `nuvctl`, `self`: programs that are run whole; the second with kBareOption, which is RunBarely.
void RunPrinter(const std::string& nuvsim, const std::string& nuvctl, const std::string& self);
void RunBarely();
constexpr char kBareOption[] = "bare";

// All day's use for so long; not one of those that run by themselves.
void RunSoak(const std::string& nuvsim, const std::string& folder, int seconds);

}  // namespace Bench

#endif  // NUV_BENCH_BENCHMARKS_H_
