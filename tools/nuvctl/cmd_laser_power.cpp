#include <CLI/CLI.hpp>

#include "field_report.h"
#include "setting.h"

namespace nuvctl {
namespace {

Report ShowPower(const int& percent) {
  FieldReport report;
  report.AddNumber("Laser power", "laser_power_percent", percent, " %");
  return report.Finish();
}

constexpr Setting<int> kLaserPower = {
    "the laser power",
    "It is a percentage from 0 to 100, and not every model has a laser.",
    [](const int& percent) { return API_SetLaserPower(percent); },
    [](int& percent) { return API_GetLaserPower(&percent); },
    Equal<int>,
    ShowPower};

}  // namespace

Action DeclareLaserPower(CLI::App& app) {
  const auto percent = std::make_shared<std::optional<int>>();
  app.add_option("PERCENT", *percent, "The new power; without it the power is shown")
      ->type_name("");
  return SettingAction(kLaserPower, percent);
}

}  // namespace nuvctl
