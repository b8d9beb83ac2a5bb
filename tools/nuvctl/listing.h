// Finding the printers, and asking each who it is.
#ifndef NUVCTL_LISTING_H_
#define NUVCTL_LISTING_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "context.h"
#include "error.h"

namespace NuvCtl {

// What one of several printers had to say: a row of a table and a document, or why not.
struct Answer {
  TableRow cells;
  nlohmann::ordered_json json;
  std::optional<CommandError> failure;
};

struct Listed {
  nuv::Identity who;  // of one that is known and was not found, what is known
  std::string known;  // the name that the user has given it
  Answer answer;

  // What a person knows it by.
  std::string Name() const;
  bool Found() const { return who.contact != nuv::Result::kNotFound; }
};
using Listing = std::vector<Listed>;

// Asks more of a printer that is open; on one of several threads. Throws nuv::Error.
using Errand = std::function<Answer(nuv::Printer& printer, const nuv::Call& call)>;

// The printers that are known and those that a search finds, in the order of the user's names and
// then of the addresses. All are asked at once who they are, and then `errand`, within the choice's
// time limit. One that does not tell says why in `who.contact`. Throws CommandError when there is
// none.
Listing ListPrinters(const Context& context, const Errand& errand = nullptr);

// Its IPv4 address, or the device node of one on USB.
std::string AddressText(const nuv::Identity& who);

// "ok", "busy", "does not answer" ...
std::string ContactText(nuv::Result contact);

// Who a printer is, for scripts, and a row of the list.
nlohmann::ordered_json ListedJson(const Listed& printer, size_t index);
Report ListingReport(const Listing& listing);

}  // namespace NuvCtl

#endif  // NUVCTL_LISTING_H_
