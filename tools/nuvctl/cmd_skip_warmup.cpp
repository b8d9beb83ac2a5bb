#include "library.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunSkipWarmup(Context& context) {
  OpenPrinter(context);
  CheckOrder(API_SkipSLAWarmup(), "Skipping the warm-up",
             "Only a printer that is warming up can skip it, and not every model warms up.");
  return {"The printer skips its warm-up.\n", {{"warmup", "skipped"}}};
}

}  // namespace

Action DeclareSkipWarmup(CLI::App&) { return RunSkipWarmup; }

}  // namespace nuvctl
