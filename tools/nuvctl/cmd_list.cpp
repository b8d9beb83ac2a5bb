#include "error.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunList(Context& context) {
  const Listing listing = ListPrinters(context.options);
  try {
    RequireListed(listing, context.options);
  } catch (CommandError& error) {
    error.shown_is_result = true;
    throw;
  }
  return ListingReport(listing);
}

}  // namespace

Action DeclareList(CLI::App&) { return RunList; }

}  // namespace nuvctl
