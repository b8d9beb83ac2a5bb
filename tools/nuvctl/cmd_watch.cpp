#include <CLI/CLI.hpp>
#include <memory>

#include "print_watch.h"
#include "printers.h"
#include "subcommands.h"
#include "watch_option.h"

namespace nuvctl {
namespace {

Report RunWatch(Context& context, int interval_ms) {
  OpenPrinter(context);
  WatchPrint(context, interval_ms);
  return Report();
}

}  // namespace

Action DeclareWatch(CLI::App& app) {
  const auto interval_ms = DeclareInterval(app);
  return [interval_ms](Context& context) { return RunWatch(context, *interval_ms); };
}

}  // namespace nuvctl
