#include "commands/commands.h"
#include "nuvconnect/ResultCodes.h"

namespace NuvCtl {
namespace {

Report RunList(Context& context) {
  const Listing listing = ListPrinters(context.choice);
  if (listing.result == NUV_OK) return ListingReport(listing);
  CommandError error = Incomplete(listing, context.choice);
  error.shownIsResult = true;
  throw error;
}

}  // namespace

Subcommands DeviceCommands() {
  return {{"list", "List the printers on the network or, with --usb, on USB", "nuvctl list",
           Plain<RunList>}};
}

}  // namespace NuvCtl
