// Prints the project's figures with their limits. Run it through ./dev bench, which makes the
// private network that searching needs.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/servers.h"

// With arguments only those are run: status, parser, job, firmware, handlers, discovery,
// printer; soak SECONDS.
int main(int argc, char** argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  if (wanted.size() == 3 && wanted[0] == Bench::kServeOption) {
    Bench::Serve(wanted[1], static_cast<uint16_t>(std::atoi(wanted[2].c_str())));
  }
  if (!Bench::InPrivateNetwork()) {
    std::fprintf(stderr, "not in the private network (run through ./dev bench)\n");
    return 2;
  }
  if (wanted.size() == 1 && wanted[0] == Bench::kBareOption) {
    Bench::RunBarely();
    return 0;
  }
  const auto runs = [&](const char* name) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
  };
  // Generic, since it also goes into a JSON file.
  const std::string folder = (std::filesystem::temp_directory_path() / "nuvbench").generic_string();
  if (wanted.size() == 2 && wanted[0] == "soak") {
    Bench::RunSoak(NUVSIM_FILE, folder, std::atoi(wanted[1].c_str()));
  }
  if (runs("status")) Bench::RunStatus();
  if (runs("parser")) Bench::RunParser();
  if (runs("job")) Bench::RunJob(NUVSIM_FILE, folder);
  if (runs("firmware")) Bench::RunFirmware(NUVSIM_FILE, folder);
  if (runs("handlers")) Bench::RunHandlers(NUVSIM_FILE, folder);
  if (runs("discovery")) Bench::RunDiscovery();
  if (runs("printer")) Bench::RunPrinter(NUVSIM_FILE, NUVCTL_FILE, argv[0]);
  if (Bench::AnyOverLimit()) std::printf("at least one figure is over its limit\n");
  return Bench::AnyOverLimit() ? 1 : 0;
}
