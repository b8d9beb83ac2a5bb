// What a subcommand has to say, once for people and once for scripts.
#ifndef NUVCTL_REPORT_H_
#define NUVCTL_REPORT_H_

#include <nlohmann/json.hpp>
#include <string>

namespace nuvctl {

// Subcommands return this instead of writing to the standard output, which is how --json can
// promise exactly one document there; those that go on and on use stream.h.
struct Report {
  std::string text;             // whole lines, safe for a terminal
  nlohmann::ordered_json json;  // an object, or null when there is nothing to say
};

}  // namespace nuvctl

#endif  // NUVCTL_REPORT_H_
