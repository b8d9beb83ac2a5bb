#include "field_report.h"
#include "library.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunLeds(Context& context) {
  OpenPrinter(context);
  TextBuffer hours;
  CheckQuery(API_GetLedUseTime(hours.Data()), "Reading the use of the light source");
  FieldReport report;
  report.AddMeasure("Light source on", "led_hours", hours.Text(), " h");
  return report.Finish();
}

}  // namespace

Action DeclareLeds(CLI::App&) { return RunLeds; }

}  // namespace nuvctl
