#include "bench/process.h"

#include <cstdlib>
#include <cstring>

namespace Bench {

void WaitUntilReady(std::FILE* printed, const std::string& program) {
  char line[1024];
  while (printed != nullptr && std::fgets(line, sizeof line, printed) != nullptr) {
    line[std::strcspn(line, "\r\n")] = '\0';
    if (std::strcmp(line, "ready") == 0) return;
  }
  std::fprintf(stderr, "%s did not start\n", program.c_str());
  std::exit(1);
}

}  // namespace Bench
