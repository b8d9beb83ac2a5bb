#include "printers.h"

#include <algorithm>

#include "error.h"
#include "library.h"
#include "table.h"
#include "wait.h"

namespace nuvctl {
namespace {

constexpr int kSerialBuffers = 256;

constexpr char kUsbOpenHint[] =
    "Another program may have it open. On Linux its users need the right to use it, which the udev "
    "rule of NuvConnect5 gives (see the README); 'nuvctl --debug' shows the reason.";

NuvDeviceKind KindOf(const Options& options) {
  return options.usb ? NUV_KIND_USB : NUV_KIND_NETWORK;
}

std::string DeviceText(NuvDeviceKind kind, int index, NuvDeviceField field) {
  TextBuffer text;
  API_GetDeviceInfo(text.Data(), kind, index, field);
  return text.Text();
}

// A device node without the mark that the library puts behind it.
std::string NodeOf(std::string identifier) {
  constexpr char kMark[] = "\\1";
  const size_t mark = identifier.rfind(kMark);
  if (mark != std::string::npos && mark + 2 == identifier.size()) identifier.erase(mark);
  return identifier;
}

CommandError NothingFound(const Options& options) {
  const std::string port = options.port ? std::to_string(*options.port) : "6013";
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  if (options.usb) {
    return CommandError("no_printer", kNoPrinter, "No printer was found on USB",
                        "Check the cable and that the printer is on. On Linux the kernel's driver "
                        "usblp must be loaded ('modprobe usblp').",
                        report);
  }
  return CommandError("no_printer", kNoPrinter, "No printer was found on the network",
                      "Check that the printer is on and in the same network as this computer, "
                      "and that no firewall blocks UDP port " +
                          port + "; a longer --timeout helps with slow networks.",
                      report);
}

CommandError Incomplete(const Listing& listing, const Options& options) {
  if (listing.result != NUV_CONNECTION_REFUSED) {
    CommandError error = FailureOf(listing.result, "Asking the printers what they are");
    error.shown = ListingReport(listing);
    return error;
  }
  CommandError error(
      "listing_incomplete", kConnectionProblem,
      std::string(options.usb ? "A printer on USB" : "A printer answered the search but") +
          " could not be opened, so the list ends after " + std::to_string(listing.printers.size()),
      options.usb ? kUsbOpenHint
                  : "Another program may be connected to it. A printer whose address is known can "
                    "still be used: give --address.",
      ListingReport(listing));
  error.result = listing.result;
  return error;
}

CommandError Unclear(const Listing& listing, const std::string& message, const std::string& hint) {
  return CommandError("which_printer", kNoPrinter, message, hint, ListingReport(listing));
}

std::string WhichHint(const Options& options) {
  if (options.usb)
    return options.serial ? "Say which one with --index."
                          : "Say which one with --serial or --index.";
  return options.serial ? "Say which one with --address or --index."
                        : "Say which one with --serial, --address or --index.";
}

// What is known of the printer that was opened by `index` or `address`.
Printer KnownPrinter(const Listing& listing, int index, const std::string& address) {
  for (const Printer& printer : listing.printers) {
    if (printer.index == index || (!address.empty() && printer.address == address)) return printer;
  }
  Printer unknown;
  unknown.index = index;
  unknown.address = address;
  return unknown;
}

Printer OpenByAddress(const Listing& listing, const std::string& address) {
  Printer printer = KnownPrinter(listing, -1, address);
  const int result = API_ConnectNetWorkDevice(address.c_str());
  if (result == NUV_CONNECTION_REFUSED && listing.result == NUV_OK && printer.serial.empty()) {
    throw Unclear(listing, "No printer at " + address + " answered the search",
                  "These did; check the address, or give a longer --timeout.");
  }
  Check(result, "Opening the printer at " + address);
  return printer;
}

Printer OpenByIndex(const Listing& listing, int index, const Options& options) {
  // An incomplete listing does not tell how many there are; the library then judges the index.
  if (listing.result == NUV_OK && static_cast<size_t>(index) >= listing.printers.size()) {
    throw Unclear(listing, "There is no printer " + std::to_string(index) + " in the list",
                  "Indexes start at 0 and may change from search to search; --serial does not.");
  }
  const int result = API_ChooseDevice(KindOf(options), index);
  if (result != NUV_OK) {
    CommandError error = FailureOf(result, "Opening printer " + std::to_string(index));
    if (options.usb) error.hint = kUsbOpenHint;
    throw error;
  }
  return KnownPrinter(listing, index, std::string());
}

// The index of the printer that is meant when neither address nor index is given.
int FindIndex(const Listing& listing, const Options& options) {
  std::vector<Printer> matches = listing.printers;
  if (options.serial) {
    const auto other = [&](const Printer& printer) { return printer.serial != *options.serial; };
    matches.erase(std::remove_if(matches.begin(), matches.end(), other), matches.end());
  }
  const bool missing = options.serial && matches.empty();
  if (listing.result != NUV_OK && (missing || !options.serial)) throw Incomplete(listing, options);
  if (missing) {
    throw Unclear(listing, "No printer has the serial number " + *options.serial,
                  "These were found; upper and lower case count.");
  }
  if (matches.size() > 1) {
    throw Unclear(
        listing,
        options.serial ? "Several printers have this serial number" : "Several printers were found",
        WhichHint(options));
  }
  return matches.front().index;
}

}  // namespace

Listing ListPrinters(const Options& options) {
  if (options.port) API_SetBroadCastPort(*options.port);
  TextList serials(kSerialBuffers);
  int count = kSerialBuffers;
  Listing listing;
  const NuvDeviceKind kind = KindOf(options);
  listing.result =
      API_GetDeviceList(kind, serials.Data(), &count, TextList::kLength, options.timeout_ms);
  // After a failure the library's table is an older one, and only the serial numbers are copied.
  const bool complete = listing.result == NUV_OK;
  const int known = complete ? count : std::min(count, kSerialBuffers);
  for (int i = 0; i < known; ++i) {
    Printer printer;
    printer.index = i;
    printer.serial = complete ? DeviceText(kind, i, NUV_DEVICE_SERIAL) : serials.Text(i);
    if (complete) {
      printer.address = DeviceText(kind, i, NUV_DEVICE_IDENTIFIER);
      if (options.usb) printer.address = NodeOf(printer.address);
      printer.model = DeviceText(kind, i, NUV_DEVICE_MODEL);
      printer.nickname = DeviceText(kind, i, NUV_DEVICE_SUPPLEMENTARY);
    }
    listing.printers.push_back(printer);
  }
  return listing;
}

Report ListingReport(const Listing& listing) {
  const bool complete = listing.result == NUV_OK;
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  for (const Printer& printer : listing.printers) {
    nlohmann::ordered_json entry = {{"index", printer.index}, {"serial", printer.serial}};
    if (complete) {
      entry["address"] = printer.address;
      entry["model"] = printer.model;
      entry["nickname"] = printer.nickname;
    }
    report.json["printers"].push_back(entry);
    rows.push_back({std::to_string(printer.index), printer.address, printer.serial, printer.model,
                    printer.nickname});
  }
  if (!rows.empty()) {
    report.text = FormatTable({"INDEX", "ADDRESS", "SERIAL", "MODEL", "NICKNAME"}, rows);
  }
  return report;
}

void RequireListed(const Listing& listing, const Options& options) {
  if (listing.result == NUV_NOT_FOUND) throw NothingFound(options);
  if (listing.result != NUV_OK) throw Incomplete(listing, options);
  if (listing.printers.empty()) throw NothingFound(options);
}

Printer OpenPrinter(const Context& context) {
  const Options& options = context.options;
  const Listing listing = ListPrinters(options);
  const bool empty = listing.result == NUV_OK && listing.printers.empty();
  if (listing.result == NUV_NOT_FOUND || empty) throw NothingFound(options);
  if (options.address) return OpenByAddress(listing, *options.address);
  if (options.index) return OpenByIndex(listing, *options.index, options);
  return OpenByIndex(listing, FindIndex(listing, options), options);
}

void ReopenPrinter(const Context& context, const Printer& printer) {
  constexpr int kSearches = 3;
  // The place in the list may have changed. A printer that tells no serial number is known by its
  // address; on USB by its node, which no option chooses.
  Options options = context.options;
  if (!options.address) {
    options.serial.reset();
    options.index.reset();
    if (!printer.serial.empty()) {
      options.serial = printer.serial;
    } else if (options.usb || printer.address.empty()) {
      options.index = printer.index;
    } else {
      options.address = printer.address;
    }
  }
  API_NUVCONNECT_CloseDevice();
  Printer found;
  std::optional<CommandError> missing;
  const auto opens = [&] {
    try {
      found = OpenPrinter({options, context.system, context.err, context.out, context.streams});
      return true;
    } catch (const CommandError& error) {
      if (error.exit != kNoPrinter) throw;
      missing = error;
      return false;
    }
  };
  if (!WaitFor(context.system, kSearches, opens)) throw *missing;
  const bool same = printer.serial.empty()
                        ? found.address == printer.address && !found.address.empty()
                        : found.serial == printer.serial;
  if (!same) {
    throw CommandError("which_printer", kNoPrinter, "Another printer is in its place now", "");
  }
}

}  // namespace nuvctl
