#ifndef NUV_PRINTER_FINDER_H_
#define NUV_PRINTER_FINDER_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "printer/askers.h"
#include "transport/search_addresses.h"

namespace Nuv::Printer {

// Whom to look for.
struct Wishes {
  bool network = true;
  bool usb = true;
  Transport::SearchAddresses whom;  // on the network
  uint16_t udpPort = 0;
  bool addressesOnly = false;                     // connects to no printer
  std::function<bool(const nuv_identity&)> tell;  // of each printer; false ends the search
};

// What a host wishes. Throws Failure for what nobody can be asked for.
Wishes WishesOf(const nuv_search_options* options);

// The time limit of a search for which the host has none.
constexpr int kUsualSearchMs = 3000;

// Searches all networks and USB at once, and asks whom it finds, until `end`, which is success, or
// until the call is cancelled. The printers, in the order in which they were told. `clock` outlives
// it.
std::vector<nuv_identity> Find(const Wishes& wishes, CallLimits& limits, Platform::Deadline end,
                               Platform::Clock& clock = Platform::SystemClock(),
                               const UsbMaker& makeUsb = MakeUsbConnector);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_FINDER_H_
