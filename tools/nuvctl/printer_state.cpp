#include "printer_state.h"

#include "library.h"

namespace nuvctl {

PrinterState ReadState() {
  PrinterState state;
  Check(API_GetPrinterStatusWithErrorCode(&state.number, &state.error_number), "Reading the state");
  return state;
}

std::string StateName(int number) {
  switch (number) {
    case NUV_PRINTER_IDLE:
      return "idle";
    case NUV_PRINTER_PRINTING:
      return "printing";
    case NUV_PRINTER_RECEIVING:
      return "receiving";
    case NUV_PRINTER_ERROR:
      return "error";
    default:
      return "unknown (" + std::to_string(number) + ")";
  }
}

}  // namespace nuvctl
