// Finding the printers and opening the one that the user means.
#ifndef NUVCTL_PRINTERS_H_
#define NUVCTL_PRINTERS_H_

#include <string>
#include <vector>

#include "context.h"
#include "report.h"

namespace nuvctl {

struct Printer {
  int index = 0;        // place in the listing, as API_ChooseDevice counts
  std::string address;  // IPv4 address, or device node of a printer on USB
  std::string serial;
  std::string model;
  std::string nickname;
};

// `result`: the listing's code. Unless it is 0, `printers` are only those reached before the
// failure, with nothing but index and serial number.
struct Listing {
  int result = 0;
  std::vector<Printer> printers;
};

// Searches the network, or USB, and asks every printer found what it is.
Listing ListPrinters(const Options& options);

// The table of what was listed. For an incomplete listing only what is known of the reached.
Report ListingReport(const Listing& listing);

// Throws unless the listing is complete and not empty; the error shows what was reached.
void RequireListed(const Listing& listing, const Options& options);

// Lists, then opens the printer that the options choose, or the only one. Throws CommandError:
// none, several without a choice, or not to be opened.
Printer OpenPrinter(const Context& context);

// Opens `printer`, which was open before and is perhaps out of reach for a moment, anew. Throws
// CommandError when it is not found, or when another one is in its place.
void ReopenPrinter(const Context& context, const Printer& printer);

}  // namespace nuvctl

#endif  // NUVCTL_PRINTERS_H_
