// The current printer: opened, what it is and what it does. All functions throw CommandError when
// the printer does not tell.
#ifndef NUVCTL_PRINTER_H_
#define NUVCTL_PRINTER_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "listing.h"
#include "system.h"

namespace NuvCtl {

// Lists, then opens the printer that was chosen, or the only one. Throws CommandError: none,
// several without a choice, or not to be opened.
Printer OpenPrinter(const Choice& choice);

// Opens `printer`, which was open before and is perhaps out of reach for a moment, anew. Throws
// CommandError when it is not found, or when another one is in its place.
void ReopenPrinter(Choice choice, System& system, const Printer& printer);

// Models that are asked in another way than the rest.
constexpr char kBegoModel[] = "BEGO VARSEO XS";
constexpr char kThreeLineModel[] = "Fabrix150 xP";
constexpr char kFirstModel[] = "Zafel 1.0";
constexpr char kFirstModelRevised[] = "Zafel 1.0A";

struct Identity {
  std::string firmware, name, model, serial, controller;
  std::string manufactured;  // only of a BEGO printer, else empty
};

Identity ReadIdentity();

struct PrinterState {
  int number = -1;      // NuvPrinterState, or one that a later firmware added
  int errorNumber = 0;  // the printer's own; only in the error state
};

struct PrintProgress {
  int layer = 0;              // from 1
  std::optional<int> layers;  // of the whole print, when the printer tells
  int percent = 0;
  int minutesLeft = 0;
};

PrinterState ReadState();

// Nothing when no print is running (any more).
std::optional<PrintProgress> ReadProgress();

// "idle", "printing", "receiving", "error", or "unknown (7)".
std::string StateName(int number);

// "12 of 340", or "12" when the whole is not known.
std::string LayerText(const PrintProgress& progress);

// For scripts; `progress` of a running print.
nlohmann::ordered_json StateJson(const PrinterState& state,
                                 const std::optional<PrintProgress>& progress);

// Throws CommandError unless the printer is free to take a job.
void RequireReady();

// The printer's current or last job. `known` is false for models that refuse the query.
struct JobMark {
  bool known = false;
  int index = 0;
  int bytes = 0;  // received for it
};

JobMark ReadJobMark();

// Calls `settled` every half second until it is true, `attempts` times at most; false when it never
// was.
template <typename Settled>
bool WaitFor(System& system, int attempts, Settled settled) {
  constexpr int64_t kPauseMs = 500;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    if (settled()) return true;
    if (attempt < attempts) system.SleepMs(kPauseMs);
  }
  return false;
}

}  // namespace NuvCtl

#endif  // NUVCTL_PRINTER_H_
