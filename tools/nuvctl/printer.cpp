#include "printer.h"

#include <algorithm>

#include "library.h"

namespace NuvCtl {
namespace {

CommandError Unclear(const Listing& listing, const std::string& message, const std::string& hint) {
  return CommandError("which_printer", kNoPrinter, message, hint, ListingReport(listing));
}

std::string WhichHint(const Choice& choice) {
  if (choice.usb)
    return choice.serial ? "Say which one with --index."
                         : "Say which one with --serial or --index.";
  return choice.serial ? "Say which one with --address or --index."
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

Printer OpenByIndex(const Listing& listing, int index, const Choice& choice) {
  // An incomplete listing does not tell how many there are; the library then judges the index.
  if (listing.result == NUV_OK && static_cast<size_t>(index) >= listing.printers.size()) {
    throw Unclear(listing, "There is no printer " + std::to_string(index) + " in the list",
                  "Indexes start at 0 and may change from search to search; --serial does not.");
  }
  const int result = API_ChooseDevice(choice.usb ? NUV_KIND_USB : NUV_KIND_NETWORK, index);
  if (result != NUV_OK) {
    CommandError error = FailureOf(result, "Opening printer " + std::to_string(index));
    if (choice.usb) error.hint = kUsbOpenHint;
    throw error;
  }
  return KnownPrinter(listing, index, std::string());
}

// The index of the printer that is meant when neither address nor index is given.
int FindIndex(const Listing& listing, const Choice& choice) {
  std::vector<Printer> matches = listing.printers;
  if (choice.serial) {
    const auto other = [&](const Printer& printer) { return printer.serial != *choice.serial; };
    matches.erase(std::remove_if(matches.begin(), matches.end(), other), matches.end());
  }
  const bool missing = choice.serial && matches.empty();
  if (listing.result != NUV_OK && (missing || !choice.serial)) throw Incomplete(listing, choice);
  if (missing) {
    throw Unclear(listing, "No printer has the serial number " + *choice.serial,
                  "These were found; upper and lower case count.");
  }
  if (matches.size() > 1) {
    throw Unclear(
        listing,
        choice.serial ? "Several printers have this serial number" : "Several printers were found",
        WhichHint(choice));
  }
  return matches.front().index;
}

// A BEGO printer keeps its whole serial number and date of manufacture in a record of its own,
// which older firmware lacks.
void ReadBegoRecord(Identity& identity) {
  TextBuffer version, name, model, serial, controller, date;
  if (API_GetPrinterInfo_BEGO(version.Data(), name.Data(), model.Data(), serial.Data(),
                              controller.Data(), date.Data()) != NUV_OK) {
    return;
  }
  identity = {version.Text(), name.Text(),       model.Text(),
              serial.Text(),  controller.Text(), date.Text()};
}

}  // namespace

Printer OpenPrinter(const Choice& choice) {
  const Listing listing = ListPrinters(choice);
  if (choice.address) return OpenByAddress(listing, *choice.address);
  if (choice.index) return OpenByIndex(listing, *choice.index, choice);
  return OpenByIndex(listing, FindIndex(listing, choice), choice);
}

void ReopenPrinter(Choice choice, System& system, const Printer& printer) {
  constexpr int kSearches = 3;
  // The place in the list may have changed. A printer that tells no serial number is known by its
  // address; on USB by its node, which no option chooses.
  if (!choice.address) {
    choice.serial.reset();
    choice.index.reset();
    if (!printer.serial.empty()) {
      choice.serial = printer.serial;
    } else if (choice.usb || printer.address.empty()) {
      choice.index = printer.index;
    } else {
      choice.address = printer.address;
    }
  }
  API_NUVCONNECT_CloseDevice();
  Printer found;
  std::optional<CommandError> missing;
  const auto opens = [&] {
    try {
      found = OpenPrinter(choice);
      return true;
    } catch (const CommandError& error) {
      if (error.exit != kNoPrinter) throw;
      missing = error;
      return false;
    }
  };
  if (!WaitFor(system, kSearches, opens)) throw *missing;
  const bool same = printer.serial.empty()
                        ? found.address == printer.address && !found.address.empty()
                        : found.serial == printer.serial;
  if (!same) {
    throw CommandError("which_printer", kNoPrinter, "Another printer is in its place now", "");
  }
}

Identity ReadIdentity() {
  TextBuffer version, name, model, serial, controller;
  Check(API_GetPrinterInfo(version.Data(), name.Data(), model.Data(), serial.Data(),
                           controller.Data()),
        "Reading the identity");
  Identity identity = {version.Text(), name.Text(),       model.Text(),
                       serial.Text(),  controller.Text(), std::string()};
  if (identity.model == kBegoModel) ReadBegoRecord(identity);
  return identity;
}

PrinterState ReadState() {
  PrinterState state;
  Check(API_GetPrinterStatusWithErrorCode(&state.number, &state.errorNumber), "Reading the state");
  return state;
}

std::optional<PrintProgress> ReadProgress() {
  PrintProgress progress;
  const int result =
      API_GetPrintingStatus(&progress.layer, &progress.percent, &progress.minutesLeft);
  if (result == NUV_NOT_PRINTING) return std::nullopt;
  Check(result, "Reading the progress of the print");
  int layers = 0;
  int minutes = 0;
  if (API_GetTotalLayerAndTime(&layers, &minutes) == NUV_OK) progress.layers = layers;
  return progress;
}

std::string LayerText(const PrintProgress& progress) {
  return std::to_string(progress.layer) +
         (progress.layers ? " of " + std::to_string(*progress.layers) : std::string());
}

nlohmann::ordered_json StateJson(const PrinterState& state,
                                 const std::optional<PrintProgress>& progress) {
  nlohmann::ordered_json json = {{"state", StateName(state.number)},
                                 {"state_number", state.number}};
  if (state.number == NUV_PRINTER_ERROR) json["error_number"] = state.errorNumber;
  if (!progress) return json;
  json["layer"] = progress->layer;
  if (progress->layers) json["layers"] = *progress->layers;
  json["percent"] = progress->percent;
  json["minutes_left"] = progress->minutesLeft;
  return json;
}

std::string StateName(int number) {
  constexpr const char* kNames[] = {"idle", "printing", "receiving", "error"};
  return FormatName(kNames, number);
}

void RequireReady() {
  const PrinterState state = ReadState();
  switch (state.number) {
    case NUV_PRINTER_PRINTING:
      throw CommandError("busy", kPrinterFailed, "The printer is printing, so nothing was sent",
                         "'nuvctl status' shows how long it takes; send again when it is idle.");
    case NUV_PRINTER_RECEIVING:
      throw CommandError(
          "busy", kPrinterFailed, "The printer is receiving another job, so nothing was sent",
          "Wait for it. When nobody sends, an unfinished job is still open: 'nuvctl raw "
          "\"F104 S2\"' abandons it.");
    case NUV_PRINTER_ERROR:
      throw CommandError("printer_error", kPrinterFailed,
                         "The printer reports error " + std::to_string(state.errorNumber) +
                             ", so nothing was sent",
                         "Clear the error at the printer, then send again.");
    default:
      return;
  }
}

JobMark ReadJobMark() {
  JobMark mark;
  const int result = API_GetCurrJobIndexAndTotalSize(&mark.index, &mark.bytes);
  if (result == NUV_PRINTER_REFUSED) return JobMark();
  Check(result, "Reading the number of the last job");
  mark.known = true;
  return mark;
}

}  // namespace NuvCtl
