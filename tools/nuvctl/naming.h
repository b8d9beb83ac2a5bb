// Names: of hosts in the network, and those that the user has given printers.
#ifndef NUVCTL_NAMING_H_
#define NUVCTL_NAMING_H_

#include <string>

#include "context.h"
#include "known_printers.h"

namespace NuvCtl {

// `address` without its port.
std::string HostOf(const std::string& address);

// An IPv4 address or the name of a host, perhaps with ":port", as an IPv4 address with that port.
// Throws CommandError when the name is unknown or cannot be looked up within 3 s.
std::string ResolveAddress(const std::string& address);

// Keeps what was learnt of known printers: serial numbers, and addresses that have changed.
void Learn(const Context& context, const KnownPrinters& told);

}  // namespace NuvCtl

#endif  // NUVCTL_NAMING_H_
