// Prints the project's figures with their limits. Run it through ./dev bench, which makes the
// private network that searching needs.

#include <cstdio>
#include <filesystem>

#include "bench/bench.h"

int main() {
  // First, while this process has one thread: it makes copies of itself.
  bench::RunStatus();
  bench::RunParser();
  bench::RunJob(NUVSIM_FILE, (std::filesystem::temp_directory_path() / "nuvbench").string());
  bench::RunDiscovery();
  if (bench::AnyOverLimit()) std::printf("at least one figure is over its limit\n");
  return bench::AnyOverLimit() ? 1 : 0;
}
