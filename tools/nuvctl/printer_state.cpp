#include "printer_state.h"

#include "library.h"

namespace nuvctl {

PrinterState ReadState() {
  PrinterState state;
  Check(API_GetPrinterStatusWithErrorCode(&state.number, &state.error_number), "Reading the state");
  return state;
}

std::optional<PrintProgress> ReadProgress() {
  PrintProgress progress;
  const int result =
      API_GetPrintingStatus(&progress.layer, &progress.percent, &progress.minutes_left);
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
  if (state.number == NUV_PRINTER_ERROR) json["error_number"] = state.error_number;
  if (!progress) return json;
  json["layer"] = progress->layer;
  if (progress->layers) json["layers"] = *progress->layers;
  json["percent"] = progress->percent;
  json["minutes_left"] = progress->minutes_left;
  return json;
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
