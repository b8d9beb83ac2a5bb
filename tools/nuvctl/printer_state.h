// The printer's state: asked for, and in words.
#ifndef NUVCTL_PRINTER_STATE_H_
#define NUVCTL_PRINTER_STATE_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace nuvctl {

struct PrinterState {
  int number = -1;       // NuvPrinterState, or one that a later firmware added
  int error_number = 0;  // the printer's own; only in the error state
};

// Throws CommandError when the printer does not tell.
PrinterState ReadState();

struct PrintProgress {
  int layer = 0;              // from 1
  std::optional<int> layers;  // of the whole print, when the printer tells
  int percent = 0;
  int minutes_left = 0;
};

// Nothing when no print is running (any more). Throws as above.
std::optional<PrintProgress> ReadProgress();

// "12 of 340", or "12" when the whole is not known.
std::string LayerText(const PrintProgress& progress);

// For scripts; `progress` of a running print.
nlohmann::ordered_json StateJson(const PrinterState& state,
                                 const std::optional<PrintProgress>& progress);

// "idle", "printing", "receiving", "error", or "unknown (7)".
std::string StateName(int number);

}  // namespace nuvctl

#endif  // NUVCTL_PRINTER_STATE_H_
