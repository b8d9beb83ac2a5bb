#include "field_report.h"
#include "identity.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunInfo(Context& context) {
  const Printer printer = OpenPrinter(context);
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

}  // namespace

Action DeclareInfo(CLI::App&) { return RunInfo; }

}  // namespace nuvctl
