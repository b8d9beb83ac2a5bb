// The option that 'watch' and 'send --watch' share.
#ifndef NUVCTL_WATCH_OPTION_H_
#define NUVCTL_WATCH_OPTION_H_

#include <CLI/CLI.hpp>
#include <memory>

#include "print_watch.h"

namespace nuvctl {

// Adds --interval to `app`; the value is there after parsing.
inline std::shared_ptr<int> DeclareInterval(CLI::App& app) {
  constexpr int kLongestMs = 3600000;
  auto interval_ms = std::make_shared<int>(kShortestIntervalMs);
  app.add_option("--interval", *interval_ms, "Milliseconds from look to look")
      ->type_name("MS")
      ->check(CLI::Range(kShortestIntervalMs, kLongestMs).description(""))
      ->capture_default_str();
  return interval_ms;
}

}  // namespace nuvctl

#endif  // NUVCTL_WATCH_OPTION_H_
