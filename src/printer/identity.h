#ifndef NUV_PRINTER_IDENTITY_H_
#define NUV_PRINTER_IDENTITY_H_

#include <string>

#include "command/command_runner.h"
#include "printer/failure.h"
#include "transport/discovery_reply.h"

namespace Nuv::Printer {

// The printer of a search's answer, before it is asked.
nuv_identity IdentityOf(const Transport::NetworkDevice& device);
// The printer on a USB port.
nuv_identity IdentityOf(const std::string& usbPath);

// Asks an open printer who it is and adds that to `printer`: command 101, of dental models also 354
// and 140, and 197. Throws Failure when 101 is not answered, and as cancelled when nobody waits any
// more, whyever; what a later command does not get stays unknown.
void AskIdentity(const Connect::CommandRunner& commands, nuv_identity& printer);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_IDENTITY_H_
