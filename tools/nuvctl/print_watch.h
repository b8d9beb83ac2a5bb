// Following a print until it ends.
#ifndef NUVCTL_PRINT_WATCH_H_
#define NUVCTL_PRINT_WATCH_H_

#include <optional>
#include <string>

#include "context.h"
#include "printer_state.h"

namespace nuvctl {

constexpr int kShortestIntervalMs = 1000;

// "printing, layer 12 of 340, 34 %, 56 min left"; other states with nothing but what they tell.
std::string WatchText(const PrinterState& state, const std::optional<PrintProgress>& progress);

// The same with a bar, in at most `width` columns.
std::string WatchRow(const PrinterState& state, const std::optional<PrintProgress>& progress,
                     int width);

// Asks the current printer every `interval_ms` and shows what has changed, until it neither prints
// nor receives: one row written over on a terminal, else a line or document per change. Throws
// CommandError when the printer reports an error or is lost.
// It asks instead of using the library's status thread, which tells neither errors nor the end, and
// writes a line of its own to the standard output.
void WatchPrint(Context& context, int interval_ms);

}  // namespace nuvctl

#endif  // NUVCTL_PRINT_WATCH_H_
