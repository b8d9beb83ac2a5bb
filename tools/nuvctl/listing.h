// Finding the printers.
#ifndef NUVCTL_LISTING_H_
#define NUVCTL_LISTING_H_

#include <optional>
#include <string>
#include <vector>

#include "error.h"
#include "output.h"

namespace NuvCtl {

// Where printers are looked for, and which of them is meant.
struct Choice {
  bool usb = false;         // those on USB instead of those on the network
  int timeoutMs = 3000;     // wait of the network search
  std::optional<int> port;  // UDP port of the search; the library's own when not given
  // At most one of these.
  std::optional<std::string> serial;
  std::optional<std::string> address;
  std::optional<int> index;
};

struct Printer {
  int index = 0;        // place in the listing, as API_ChooseDevice counts
  std::string address;  // IPv4 address, or device node of a printer on USB
  std::string serial;
  std::string model;
  std::string nickname;

  // What a person knows it by.
  const std::string& Name() const { return serial.empty() ? address : serial; }
};

// `result`: the listing's code. Unless it is 0, `printers` are only those reached before the
// failure, with nothing but index and serial number.
struct Listing {
  int result = 0;
  std::vector<Printer> printers;
};

constexpr char kUsbOpenHint[] =
    "Another program may have it open. On Linux its users need the right to use it, which the udev "
    "rule of NuvConnect5 gives (see the README); 'nuvctl --debug' shows the reason.";

// Searches the network, or USB, and asks every printer found what it is. Throws CommandError when
// nothing was found.
Listing ListPrinters(const Choice& choice);

// The table of what was listed. For an incomplete listing only what is known of the reached.
Report ListingReport(const Listing& listing);

// The failure of a listing that ended before it was complete; shows what was reached.
CommandError Incomplete(const Listing& listing, const Choice& choice);

}  // namespace NuvCtl

#endif  // NUVCTL_LISTING_H_
