// What every subcommand gets to work with.
#ifndef NUVCTL_CONTEXT_H_
#define NUVCTL_CONTEXT_H_

#include <optional>
#include <ostream>
#include <string>

#include "system.h"

namespace nuvctl {

// The options that stand before or after any subcommand.
struct Options {
  bool json = false;
  bool debug = false;
  bool usb = false;         // printers on USB instead of those on the network
  int timeout_ms = 3000;    // wait of the network search
  std::optional<int> port;  // UDP port of the search; the library's own when not given
  // Which printer; at most one of these.
  std::optional<std::string> serial;
  std::optional<std::string> address;
  std::optional<int> index;
};

struct Context {
  const Options& options;
  System& system;
  std::ostream& err;  // progress and remarks; results are returned as a Report
};

}  // namespace nuvctl

#endif  // NUVCTL_CONTEXT_H_
