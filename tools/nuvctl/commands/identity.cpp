#include "commands/commands.h"
#include "format.h"
#include "library.h"
#include "printer.h"

namespace NuvCtl {
namespace {

Report RunInfo(Context& context) {
  const Printer printer = OpenPrinter(context.choice);
  const Identity identity = ReadIdentity();
  FieldReport report;
  report.AddText("Address", "address", printer.address);
  report.AddText("Name", "name", identity.name);
  report.AddText("Model", "model", identity.model);
  report.AddText("Serial number", "serial", identity.serial);
  report.AddText("Firmware", "firmware", identity.firmware);
  report.AddText("Controller", "controller", identity.controller);
  report.AddText("Nickname", "nickname", printer.nickname);
  if (!identity.manufactured.empty()) {
    report.AddText("Manufactured", "manufactured", identity.manufactured);
  }
  return report.Finish();
}

Fields FieldsOf(const PrinterState& state, const std::optional<PrintProgress>& progress) {
  Fields fields = {{"State", StateName(state.number)}};
  if (state.number == NUV_PRINTER_ERROR) {
    fields.emplace_back("Error number", std::to_string(state.errorNumber));
  }
  if (!progress) return fields;
  fields.emplace_back("Layer", LayerText(*progress));
  fields.emplace_back("Progress", std::to_string(progress->percent) + " %");
  fields.emplace_back("Time left", std::to_string(progress->minutesLeft) + " min");
  return fields;
}

Report RunStatus(Context& context) {
  OpenPrinter(context.choice);
  PrinterState state = ReadState();
  std::optional<PrintProgress> progress;
  if (state.number == NUV_PRINTER_PRINTING) {
    progress = ReadProgress();
    if (!progress) state = ReadState();  // the print has ended since
  }
  return {FormatFields(FieldsOf(state, progress)), StateJson(state, progress)};
}

Report RunVersions(Context& context) {
  OpenPrinter(context.choice);
  const Identity identity = ReadIdentity();
  FieldReport report;
  report.AddText("Firmware", "firmware", identity.firmware);
  report.AddText("Controller", "controller", identity.controller);
  TextBuffer android;
  if (Answered(API_GetAndroidVersion(android.Data()), "Reading the version of the Android board")) {
    report.AddText("Android board", "android", android.Text());
  }
  TextBuffer panel;
  if (Answered(API_GetLCMPanelVersion(panel.Data()), "Reading the version of the LCM panel")) {
    report.AddText("LCM panel", "lcm_panel", panel.Text());
  }
  return report.Finish();
}

Report RunSkipWarmup(Context& context) {
  OpenPrinter(context.choice);
  CheckOrder(API_SkipSLAWarmup(), "Skipping the warm-up",
             "Only a printer that is warming up can skip it, and not every model warms up.");
  return {"The printer skips its warm-up.\n", {{"warmup", "skipped"}}};
}

}  // namespace

Subcommands IdentityCommands() {
  return {{"info", "Show what a printer is", "nuvctl info --serial SN0042", Plain<RunInfo>},
          {"status", "Show what a printer does", "nuvctl status --json", Plain<RunStatus>},
          {"versions", "Show the versions of firmware and boards", "nuvctl versions",
           Plain<RunVersions>},
          {"skip-warmup", "Skip the warm-up that the printer is in", "nuvctl skip-warmup",
           Plain<RunSkipWarmup>}};
}

}  // namespace NuvCtl
