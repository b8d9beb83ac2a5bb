#include "library.h"
#include "printer_state.h"
#include "printers.h"
#include "subcommands.h"
#include "table.h"

namespace nuvctl {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

Fields FieldsOf(const PrinterState& state, const std::optional<PrintProgress>& progress) {
  Fields fields = {{"State", StateName(state.number)}};
  if (state.number == NUV_PRINTER_ERROR) {
    fields.emplace_back("Error number", std::to_string(state.error_number));
  }
  if (!progress) return fields;
  fields.emplace_back("Layer", LayerText(*progress));
  fields.emplace_back("Progress", std::to_string(progress->percent) + " %");
  fields.emplace_back("Time left", std::to_string(progress->minutes_left) + " min");
  return fields;
}

Report RunStatus(Context& context) {
  OpenPrinter(context);
  PrinterState state = ReadState();
  std::optional<PrintProgress> progress;
  if (state.number == NUV_PRINTER_PRINTING) {
    progress = ReadProgress();
    if (!progress) state = ReadState();  // the print has ended since
  }
  return {FormatFields(FieldsOf(state, progress)), StateJson(state, progress)};
}

}  // namespace

Action DeclareStatus(CLI::App&) { return RunStatus; }

}  // namespace nuvctl
