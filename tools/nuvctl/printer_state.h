// The printer's state: asked for, and in words.
#ifndef NUVCTL_PRINTER_STATE_H_
#define NUVCTL_PRINTER_STATE_H_

#include <string>

namespace nuvctl {

struct PrinterState {
  int number = -1;       // NuvPrinterState, or one that a later firmware added
  int error_number = 0;  // the printer's own; only in the error state
};

// Throws CommandError when the printer does not tell.
PrinterState ReadState();

// "idle", "printing", "receiving", "error", or "unknown (7)".
std::string StateName(int number);

}  // namespace nuvctl

#endif  // NUVCTL_PRINTER_STATE_H_
