#include "target.h"

#include <algorithm>

#include "naming.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

using nuv::Result;

CommandError Unclear(const Listing& listing, const std::string& message, const std::string& hint) {
  return CommandError("which_printer", kNoPrinter, message, hint, ListingReport(listing));
}

Target Open(const Context& context, const Listed& printer) {
  const std::string& address = printer.who.address;
  if (printer.who.contact == Result::kNotFound) {
    throw CommandError("no_printer", kNoPrinter, printer.Name() + " was not found",
                       "Check that the printer is on; 'nuvctl printers list' shows its address.");
  }
  return Asked("Opening " + printer.Name() + " at " + address, [&] {
    return Target(context, nuv::Printer::Open(printer.who, context.Call(printer.Name())), printer);
  });
}

// `address`: as the user gave it; `limitMs`: less than the choice's, 0: that.
Target OpenAddress(const Context& context, const std::string& address, const std::string& known,
                   int limitMs = 0) {
  std::string place = ResolveAddress(address);
  Listed where;
  where.who.address = HostOf(place);
  where.known = known;
  if (context.choice.port && place == where.who.address) {
    place += ':' + std::to_string(*context.choice.port);
  }
  return Asked("Opening the printer at " + address, [&] {
    nuv::Call call = context.Call(address);
    if (limitMs > 0) call.timeLimit = std::min(call.timeLimit, std::chrono::milliseconds(limitMs));
    return Target(context, nuv::Printer::OpenAddress(place, call), where);
  });
}

// The printer seen last under this serial number, if it is still where it was.
std::optional<Target> OpenSeen(const Context& context, const std::string& serial,
                               const std::string& known) {
  constexpr int kPatienceMs = 1500;
  const std::optional<KnownPrinter> seen = FindSeen(serial);
  if (!seen || context.choice.usb) return std::nullopt;
  try {
    Target target = OpenAddress(context, seen->address, known, kPatienceMs);
    if (target.Who().serial == seen->serial) return target;
  } catch (const CommandError& error) {
    if (error.exit == kCancelled) throw;
  }
  return std::nullopt;
}

using Matches = bool (*)(const Listed& printer, const std::string& wanted);

bool HasSerial(const Listed& printer, const std::string& wanted) {
  return printer.who.serial == wanted;
}
bool SerialEndsIn(const Listed& printer, const std::string& wanted) {
  return printer.who.serial && EndsIn(*printer.who.serial, wanted);
}
bool HasNickname(const Listed& printer, const std::string& wanted) {
  return !wanted.empty() && printer.who.nickname == wanted;
}

// The only one that matches, by the first of the ways in which any does.
Listed TheOne(const Listing& listing, const std::string& wanted, const std::vector<Matches>& ways,
              const std::string& what) {
  for (const Matches matches : ways) {
    const auto is = [&](const Listed& one) { return matches(one, wanted); };
    const auto found = std::find_if(listing.begin(), listing.end(), is);
    if (found == listing.end()) continue;
    if (std::none_of(found + 1, listing.end(), is)) return *found;
    Listing several;
    std::copy_if(listing.begin(), listing.end(), std::back_inserter(several), is);
    throw Unclear(several, "Several printers have " + what + " " + wanted,
                  "Say which one with --address.");
  }
  throw Unclear(listing, "No printer has " + what + " " + wanted, "These were found.");
}

// One that has this serial number, or the only one that ends in it.
Target OpenSerial(const Context& context, const std::string& serial, const std::string& known) {
  if (std::optional<Target> seen = OpenSeen(context, serial, known)) return std::move(*seen);
  const Listing listing = ListPrinters(context);
  return Open(context, TheOne(listing, serial, {HasSerial, SerialEndsIn}, "the serial number"));
}

// The printer at a known address, with the serial number that it had at the first contact.
std::optional<Target> OpenKnownAddress(const Context& context, const KnownPrinter& known) {
  try {
    Target target = OpenAddress(context, known.address, known.name);
    const std::string serial = target.Who().serial.value_or("");
    if (known.serial.empty()) {
      Learn(context, {{known.name, known.address, serial}});
    } else if (serial != known.serial) {
      throw CommandError(
          "another_printer", kNoPrinter,
          "At " + known.address + " there is now another printer, " + target.Description() +
              ", in place of " + known.name + " (" + known.serial + ")",
          "When that is meant: 'nuvctl printers add --replace' with its name and address.");
    }
    return target;
  } catch (const CommandError& error) {
    const bool away = error.result == Result::kNotFound || error.result == Result::kUnreachable;
    if (!away || known.serial.empty()) throw;
  }
  return std::nullopt;
}

Listed TheOneNamed(const Listing& listing, const std::string& name) {
  return TheOne(listing, name, {HasNickname, HasSerial, SerialEndsIn},
                "the name, nickname or serial number");
}

KnownPrinters::const_iterator FindKnown(const KnownPrinters& all, const std::string& name) {
  return std::find_if(all.begin(), all.end(),
                      [&](const KnownPrinter& one) { return one.name == name; });
}

Target OpenNamed(const Context& context, const std::string& name) {
  const KnownPrinters all = LoadKnown();
  const auto known = FindKnown(all, name);
  if (known == all.end()) return Open(context, TheOneNamed(ListPrinters(context), name));
  if (!known->address.empty()) {
    if (std::optional<Target> target = OpenKnownAddress(context, *known)) {
      return std::move(*target);
    }
  }
  Target target = OpenSerial(context, known->serial, known->name);
  if (!known->address.empty() && target.Where().link == nuv::Link::kNetwork) {
    Learn(context, {{known->name, target.Where().address, known->serial}});
    context.output.Remark(known->name + " is at " + target.Where().address + " now");
  }
  return target;
}

}  // namespace

Target::Target(const Context& context, nuv::Printer printer, Listed where)
    : context_(&context),
      printer_(std::move(printer)),
      where_(std::move(where)),
      asked_(where_.who.serial.has_value()) {}

std::string Target::Description() const {
  std::string text = where_.who.model.value_or("a printer");
  if (where_.who.nickname && !where_.who.nickname->empty()) {
    text += " \"" + *where_.who.nickname + '"';
  }
  return Printable(text + " at " + AddressText(where_.who));
}

const nuv::Identity& Target::Who() {
  if (!asked_) {
    const nuv::Identity who = Ask("Reading the identity", &nuv::Printer::GetIdentity);
    const std::string address = where_.who.address;
    where_.who = who;
    where_.who.address = address;
    asked_ = true;
  }
  return where_.who;
}

CommandError Target::LackOf(const nuv::Error& error, const std::string& action) {
  CommandError failure = FailureOf(error, action);
  if (error.Reason() == Result::kRefused) {
    failure.message = action + " failed: this printer does not have it (printer command " +
                      std::to_string(error.Command()) + ")";
    failure.hint = "Models differ in what they can tell; 'nuvctl info' shows which one this is.";
  }
  return failure;
}

Target OpenTarget(const Context& context) {
  const Choice& choice = context.choice;
  if (choice.address) return OpenAddress(context, *choice.address, "");
  if (choice.serial) return OpenSerial(context, *choice.serial, "");
  if (choice.printers.size() > 1) {
    throw UsageError("Only 'nuvctl send' takes several printers", "Give one --printer.");
  }
  if (!choice.printers.empty()) return OpenNamed(context, choice.printers.front());
  const Listing listing = ListPrinters(context);
  if (choice.index) {
    const auto index = static_cast<size_t>(*choice.index);
    if (index < listing.size()) return Open(context, listing[index]);
    throw Unclear(listing, "There is no printer " + std::to_string(index) + " in the list",
                  "Indexes start at 0 and may change from search to search; --serial does not.");
  }
  if (listing.size() > 1) {
    throw Unclear(listing, "Several printers were found",
                  "Say which one with --printer, --serial, --address or --index.");
  }
  return Open(context, listing.front());
}

Target OpenToChange(const Context& context) {
  if (context.choice.index) RequireSomebodyToAsk(context, "A printer chosen by --index");
  Target target = OpenTarget(context);
  target.Who();
  if (context.choice.index) {
    RequireConsent(context, "Use the " + target.Description() + "? [y/N] ", "Nothing was done");
  } else {
    context.output.Remark("Using the " + target.Description());
  }
  return target;
}

std::vector<std::vector<std::string>> OptionsFor(const Context& context,
                                                 const std::vector<std::string>& names) {
  const KnownPrinters all = LoadKnown();
  std::optional<Listing> listing;
  std::vector<std::vector<std::string>> options;
  for (const std::string& name : names) {
    // Joined, so that a name may begin with a dash.
    options.push_back({"--printer=" + name});
    if (context.choice.usb) options.back().emplace_back("--usb");
    if (FindKnown(all, name) != all.end()) continue;
    try {
      if (!listing) {
        listing.emplace();  // one that fails is not tried again
        listing = ListPrinters(context);
      }
      const Listed found = TheOneNamed(*listing, name);
      if (found.who.link == nuv::Link::kNetwork) {
        options.back() = {"--address=" + found.who.address};
      } else if (found.who.serial) {
        options.back() = {"--usb", "--serial=" + *found.who.serial};
      }
    } catch (const CommandError& error) {
      if (error.exit == kCancelled) throw;  // any other is told by the one that uses it
    }
  }
  return options;
}

Target OpenAgain(const Context& context, const nuv::Identity& before) {
  return Open(context, TheOne(ListPrinters(context), before.serial.value_or(""), {HasSerial},
                              "the serial number"));
}

void RequireSomebodyToAsk(const Context& context, const std::string& what) {
  if (context.choice.yes || context.system.InputIsTerminal()) return;
  throw UsageError(what + " is confirmed at a terminal",
                   "Give --yes to go on without being asked.");
}

void RequireConsent(const Context& context, const std::string& question, const std::string& no) {
  if (context.choice.yes) return;
  const std::optional<std::string> answer = context.system.Ask(question);
  if (answer && !answer->empty() && (answer->front() == 'y' || answer->front() == 'Y')) return;
  throw CommandError("cancelled", kCancelled, no, "Answer y to go on.");
}

}  // namespace NuvCtl
