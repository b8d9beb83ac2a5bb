// Printers that this user has given names, and those that searches have found: two files of one
// form,
// {"printers": [{"name", "address", "serial"}]}.
#ifndef NUVCTL_KNOWN_PRINTERS_H_
#define NUVCTL_KNOWN_PRINTERS_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace NuvCtl {

struct KnownPrinter {
  std::string name;     // of the user's; empty of those that were only seen
  std::string address;  // with a UDP port if need be; empty: wherever the serial number is
  std::string serial;   // empty until the first contact
};
using KnownPrinters = std::vector<KnownPrinter>;

// printers.json in $XDG_CONFIG_HOME/nuvctl, on Windows %APPDATA%\nuvctl. Both throw CommandError
// for a file that is damaged, which stays as it is, and for one that cannot be read or written.
KnownPrinters LoadKnown();
// Of several programs that change it at once none loses what another one wrote.
void ChangeKnown(const std::function<void(KnownPrinters&)>& change);

// The address of the only printer seen whose serial number this is, or ends in, in any letter case:
// seen.json in $XDG_CACHE_HOME/nuvctl, on Windows %LOCALAPPDATA%\nuvctl. Nothing when it cannot be
// read.
std::optional<KnownPrinter> FindSeen(const std::string& serial);
// Serial numbers and addresses. What cannot be written is forgotten.
void RememberSeen(const KnownPrinters& printers);

// Whether `serial` is `wanted`, or ends in it in any letter case.
bool IsSerial(const std::string& serial, const std::string& wanted);
bool EndsIn(const std::string& serial, const std::string& wanted);

}  // namespace NuvCtl

#endif  // NUVCTL_KNOWN_PRINTERS_H_
