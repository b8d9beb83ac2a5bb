// Prints the project's figures with their limits. Run it through ./dev bench, which makes the
// private network that searching needs.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/bench.h"

// With arguments only those are run: status, parser, job, firmware, handlers, discovery.
int main(int argc, char** argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  const auto runs = [&](const char* name) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
  };
  const std::string folder = (std::filesystem::temp_directory_path() / "nuvbench").string();
  // First, while this process has one thread: it makes copies of itself.
  if (runs("status")) bench::RunStatus();
  if (runs("parser")) bench::RunParser();
  if (runs("job")) bench::RunJob(NUVSIM_FILE, folder);
  if (runs("firmware")) bench::RunFirmware(NUVSIM_FILE, folder);
  if (runs("handlers")) bench::RunHandlers(NUVSIM_FILE, folder);
  if (runs("discovery")) bench::RunDiscovery();
  if (bench::AnyOverLimit()) std::printf("at least one figure is over its limit\n");
  return bench::AnyOverLimit() ? 1 : 0;
}
