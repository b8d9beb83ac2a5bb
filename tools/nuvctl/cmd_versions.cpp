#include "field_report.h"
#include "identity.h"
#include "library.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunVersions(Context& context) {
  OpenPrinter(context);
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

}  // namespace

Action DeclareVersions(CLI::App&) { return RunVersions; }

}  // namespace nuvctl
