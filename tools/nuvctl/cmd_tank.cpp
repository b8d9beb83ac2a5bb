#include "field_report.h"
#include "library.h"
#include "printers.h"
#include "subcommands.h"

namespace nuvctl {
namespace {

Report RunTank(Context& context) {
  OpenPrinter(context);
  int type = 0;
  CheckQuery(API_GetTankType(&type), "Reading the tank type");
  FieldReport report;
  report.Add("Tank", type == 0 ? "none" : std::to_string(type), "tank_type", type);
  return report.Finish();
}

}  // namespace

Action DeclareTank(CLI::App&) { return RunTank; }

}  // namespace nuvctl
