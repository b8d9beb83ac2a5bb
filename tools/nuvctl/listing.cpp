#include "listing.h"

#include <algorithm>

#include "library.h"

namespace NuvCtl {
namespace {

constexpr int kSerialBuffers = 256;

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

CommandError NothingFound(const Choice& choice) {
  const std::string port = choice.port ? std::to_string(*choice.port) : "6013";
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  if (choice.usb) {
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

}  // namespace

Listing ListPrinters(const Choice& choice) {
  if (choice.port) API_SetBroadCastPort(*choice.port);
  TextList serials(kSerialBuffers);
  int count = kSerialBuffers;
  Listing listing;
  const NuvDeviceKind kind = choice.usb ? NUV_KIND_USB : NUV_KIND_NETWORK;
  listing.result =
      API_GetDeviceList(kind, serials.Data(), &count, TextList::kLength, choice.timeoutMs);
  // After a failure the library's table is an older one, and only the serial numbers are copied.
  const bool complete = listing.result == NUV_OK;
  const int known = complete ? count : std::min(count, kSerialBuffers);
  for (int i = 0; i < known; ++i) {
    Printer printer;
    printer.index = i;
    printer.serial = complete ? DeviceText(kind, i, NUV_DEVICE_SERIAL) : serials.Text(i);
    if (complete) {
      printer.address = DeviceText(kind, i, NUV_DEVICE_IDENTIFIER);
      if (choice.usb) printer.address = NodeOf(printer.address);
      printer.model = DeviceText(kind, i, NUV_DEVICE_MODEL);
      printer.nickname = DeviceText(kind, i, NUV_DEVICE_SUPPLEMENTARY);
    }
    listing.printers.push_back(printer);
  }
  const bool empty = complete && listing.printers.empty();
  if (listing.result == NUV_NOT_FOUND || empty) throw NothingFound(choice);
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

CommandError Incomplete(const Listing& listing, const Choice& choice) {
  if (listing.result != NUV_CONNECTION_REFUSED) {
    CommandError error = FailureOf(listing.result, "Asking the printers what they are");
    error.shown = ListingReport(listing);
    return error;
  }
  CommandError error(
      "listing_incomplete", kConnectionProblem,
      std::string(choice.usb ? "A printer on USB" : "A printer answered the search but") +
          " could not be opened, so the list ends after " + std::to_string(listing.printers.size()),
      choice.usb ? kUsbOpenHint
                 : "Another program may be connected to it. A printer whose address is known can "
                   "still be used: give --address.",
      ListingReport(listing));
  error.result = listing.result;
  return error;
}

}  // namespace NuvCtl
