#include "library.h"
#include "printer_state.h"
#include "printers.h"
#include "subcommands.h"
#include "table.h"

namespace nuvctl {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

// Adds how far the print is. False when the print ended since the state was read.
bool AddPrint(Report& report, Fields& fields) {
  int layer = 0;
  int percent = 0;
  int minutes_left = 0;
  const int result = API_GetPrintingStatus(&layer, &percent, &minutes_left);
  if (result == NUV_NOT_PRINTING) return false;
  Check(result, "Reading the progress of the print");
  int layers = 0;
  int minutes = 0;
  const bool total_known = API_GetTotalLayerAndTime(&layers, &minutes) == NUV_OK;
  report.json["layer"] = layer;
  if (total_known) report.json["layers"] = layers;
  report.json["percent"] = percent;
  report.json["minutes_left"] = minutes_left;
  fields.emplace_back("Layer", std::to_string(layer) +
                                   (total_known ? " of " + std::to_string(layers) : std::string()));
  fields.emplace_back("Progress", std::to_string(percent) + " %");
  fields.emplace_back("Time left", std::to_string(minutes_left) + " min");
  return true;
}

void AddState(const PrinterState& state, Report& report, Fields& fields) {
  report.json = {{"state", StateName(state.number)}, {"state_number", state.number}};
  fields = {{"State", StateName(state.number)}};
  if (state.number == NUV_PRINTER_ERROR) {
    report.json["error_number"] = state.error_number;
    fields.emplace_back("Error number", std::to_string(state.error_number));
  }
}

Report RunStatus(Context& context) {
  OpenPrinter(context);
  Report report;
  Fields fields;
  PrinterState state = ReadState();
  AddState(state, report, fields);
  if (state.number == NUV_PRINTER_PRINTING && !AddPrint(report, fields)) {
    state = ReadState();
    AddState(state, report, fields);
  }
  report.text = FormatFields(fields);
  return report;
}

}  // namespace

Action DeclareStatus(CLI::App&) { return RunStatus; }

}  // namespace nuvctl
