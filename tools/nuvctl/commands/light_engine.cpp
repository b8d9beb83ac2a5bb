#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

#include "commands/commands.h"
#include "target.h"

namespace NuvCtl {
namespace {

struct WantedSensors {
  std::optional<int> laser;
  bool flash = false;
};

struct NumberRow {
  const char* label;
  const char* key;
  const char* unit;
  std::optional<int> nuv::Sensors::*value;
};
struct SwitchRow {
  const char* label;
  const char* key;
  std::optional<bool> nuv::Sensors::*value;
};

constexpr NumberRow kNumbers[] = {
    {"Chamber top", "sensors/chamber_top_c", kCelsius, &nuv::Sensors::chamberTopC},
    {"Chamber bottom", "sensors/chamber_bottom_c", kCelsius, &nuv::Sensors::chamberBottomC},
    {"Tank temperature", "sensors/tank_c", kCelsius, &nuv::Sensors::tankC},
    {"Resin level", "sensors/resin_level_percent", " %", &nuv::Sensors::resinLevelPercent},
};
constexpr SwitchRow kSwitches[] = {
    {"Z limit switch, top", "sensors/z_limit_top", &nuv::Sensors::zLimitTop},
    {"Z limit switch, bottom", "sensors/z_limit_bottom", &nuv::Sensors::zLimitBottom},
    {"Wiper at home", "sensors/wiper_home", &nuv::Sensors::wiperHome},
    {"Y axis at home", "sensors/y_home", &nuv::Sensors::yHome},
    {"Y axis at far end", "sensors/y_end", &nuv::Sensors::yEnd},
    {"Lid closed", "sensors/lid_closed", &nuv::Sensors::lidClosed},
    {"Cartridge in place", "sensors/cartridge", &nuv::Sensors::cartridge},
    {"Build platform in place", "sensors/platform", &nuv::Sensors::platform},
    {"Moving to its reference", "moving_to_reference", &nuv::Sensors::movingToReference},
};

void AddTank(FieldReport& report, const char* key, std::optional<int> tank) {
  if (tank) report.Add("Tank", *tank == 0 ? "none" : std::to_string(*tank), key, *tank);
}

void AddSensors(Target& target, const WantedSensors& wanted, FieldReport& report) {
  const char* const action = "Reading the sensors";
  std::optional<nuv::Sensors> sensors;
  // A model without them may still have what else was asked for.
  if (wanted.laser || wanted.flash) {
    sensors = target.Try(action, &nuv::Printer::GetSensors);
  } else {
    sensors = target.Ask(action, &nuv::Printer::GetSensors);
  }
  if (!sensors) return;
  for (const NumberRow& row : kNumbers) {
    report.AddNumber(row.label, row.key, (*sensors).*row.value, row.unit);
  }
  AddTank(report, "sensors/tank_type", sensors->tank);
  for (const SwitchRow& row : kSwitches) report.AddFlag(row.label, row.key, (*sensors).*row.value);
}

void AddLaser(Target& target, int number, FieldReport& report) {
  const nuv::Laser laser =
      target.Ask("Reading laser " + std::to_string(number), &nuv::Printer::GetLaser, number);
  report.AddNumber("Laser", "laser/number", number);
  report.AddNumber("Photodiode, lowest", "laser/photodiode/minimum", laser.photodiodeMinimum);
  report.AddNumber("Photodiode, highest", "laser/photodiode/maximum", laser.photodiodeMaximum);
  report.AddNumber("Photodiode, mean", "laser/photodiode/average", laser.photodiodeMean);
  std::string widths;
  auto numbers = nlohmann::ordered_json::array();
  for (const std::optional<int>& width : laser.pulseWidth) {
    if (!width) continue;
    widths += (widths.empty() ? "" : " ") + std::to_string(*width);
    numbers.push_back(*width);
  }
  report.Add("Pulse widths", widths, "laser/pulse_widths", numbers);
}

void AddFlash(Target& target, FieldReport& report) {
  const nuv::ScanUnit flash =
      target.Ask("Reading the flash of the scan unit", &nuv::Printer::GetScanUnit);
  // A model with one scan line counts none.
  const bool several = flash.scanCentre[1].has_value();
  const auto addAll = [&](const char* label, const char* key, const std::optional<int>* values,
                          int count) {
    for (int i = 0; i < count; ++i) {
      const bool counted = several || count == 2;
      report.AddNumber(
          label + (counted ? " " + std::to_string(i + 1) : std::string()),
          std::string("flash/") + key + (counted ? "_" + std::to_string(i + 1) : std::string()),
          values[i]);
    }
  };
  addAll("Scan centre", "scan_centre", flash.scanCentre, 3);
  addAll("Line length", "line_length", flash.lineLength, 3);
  addAll("Trigger delay", "trigger_delay", flash.triggerDelay, 3);
  addAll("Z offset", "z_offset", flash.zOffset, 2);
  report.AddNumber("Polygon speed", "flash/polygon_speed", flash.polygonSpeed);
  report.AddNumber("Start", "flash/start", flash.start);
  report.AddNumber("Line width", "flash/line_width", flash.lineWidth);
  report.AddNumber("Y offset", "flash/y_offset", flash.yOffset);
}

Action DeclareSensors(CLI::App& app) {
  constexpr int kLasers = 4;
  const auto wanted = std::make_shared<WantedSensors>();
  app.add_option("--laser", wanted->laser, "Also the readings of this laser, 1 to 4")
      ->type_name("N");
  app.add_flag("--flash", wanted->flash, "Also the parameters in the scan unit's flash");
  return [wanted](const Context& context) {
    if (wanted->laser && (*wanted->laser < 1 || *wanted->laser > kLasers)) {
      throw UsageError("There is no laser " + std::to_string(*wanted->laser),
                       "A scan unit has lasers 1 to 4.");
    }
    Target target = OpenTarget(context);
    FieldReport report;
    AddSensors(target, *wanted, report);
    if (wanted->laser) AddLaser(target, *wanted->laser, report);
    if (wanted->flash) AddFlash(target, report);
    return report.Finish();
  };
}

Report RunTank(const Context& context) {
  Target target = OpenTarget(context);
  FieldReport report;
  AddTank(report, "tank_type", target.Ask("Reading the tank", &nuv::Printer::GetSensors).tank);
  return report.Finish();
}

Report RunLeds(const Context& context) {
  Target target = OpenTarget(context);
  FieldReport report;
  report.AddNumber("Light source on", "led_hours",
                   target.Ask("Reading the use of the light source", &nuv::Printer::GetLedHours),
                   " h");
  return report.Finish();
}

}  // namespace

Subcommands LightEngineCommands() {
  return {{"sensors", "Show what the sensors and the light engine measure",
           "nuvctl sensors --laser 1", DeclareSensors},
          {"tank", "Show the tank in place", "nuvctl tank", Plain<RunTank>},
          {"leds", "Show how long the light source has been on", "nuvctl leds", Plain<RunLeds>}};
}

}  // namespace NuvCtl
