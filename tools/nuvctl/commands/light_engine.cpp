#include <CLI/CLI.hpp>
#include <limits>
#include <memory>
#include <optional>

#include "commands/commands.h"
#include "library.h"
#include "printer.h"

namespace NuvCtl {
namespace {

struct WantedSensors {
  std::optional<int> laser;
  bool flash = false;
};

enum class Kind { kTemperature, kPercent, kSwitch, kTank };

struct SensorRow {
  const char* label;
  const char* key;
  Kind kind;
};

// In the order of the library's outputs.
constexpr SensorRow kSensors[] = {
    {"Chamber top", "sensors/chamber_top_c", Kind::kTemperature},
    {"Chamber bottom", "sensors/chamber_bottom_c", Kind::kTemperature},
    {"Z limit switch, top", "sensors/z_limit_top", Kind::kSwitch},
    {"Z limit switch, bottom", "sensors/z_limit_bottom", Kind::kSwitch},
    {"Tank", "sensors/tank_type", Kind::kTank},
    {"Resin level", "sensors/resin_level_percent", Kind::kPercent},
    {"Wiper at home", "sensors/wiper_home", Kind::kSwitch},
    {"Y axis at home", "sensors/y_home", Kind::kSwitch},
    {"Lid closed", "sensors/lid_closed", Kind::kSwitch},
    {"Cartridge in place", "sensors/cartridge", Kind::kSwitch},
    {"Build platform in place", "sensors/platform", Kind::kSwitch},
    {"Y axis at far end", "sensors/y_end", Kind::kSwitch},
    {"Tank temperature", "sensors/tank_c", Kind::kTemperature},
};

void AddSensor(const SensorRow& row, int value, FieldReport& report) {
  switch (row.kind) {
    case Kind::kTemperature:
      return report.AddNumber(row.label, row.key, value, kCelsius);
    case Kind::kPercent:
      return report.AddNumber(row.label, row.key, value, " %");
    case Kind::kSwitch:
      return report.AddFlag(row.label, row.key, value != 0);
    case Kind::kTank:
      return report.Add(row.label, value == 0 ? "none" : std::to_string(value), row.key, value);
  }
}

void AddSensors(const WantedSensors& wanted, FieldReport& report) {
  int v[std::size(kSensors)] = {};
  const int result = API_GetSensorStatusFX120(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                                              &v[7], &v[8], &v[9], &v[10], &v[11], &v[12]);
  // A model without them may still have what else was asked for.
  const bool more = wanted.laser || wanted.flash;
  if (more && result == NUV_PRINTER_REFUSED) return;
  CheckQuery(result, "Reading the sensors");
  for (size_t i = 0; i < std::size(kSensors); ++i) AddSensor(kSensors[i], v[i], report);
}

void AddReposition(FieldReport& report) {
  int moving = 0;
  if (Answered(API_GetRepositionProcessing(&moving), "Reading whether the printer moves")) {
    report.AddFlag("Moving to its reference", "moving_to_reference", moving != 0);
  }
}

void AddLaser(int laser, FieldReport& report) {
  const std::string number = std::to_string(laser);
  report.AddNumber("Laser", "laser/number", laser);
  int least = 0;
  int most = 0;
  int mean = 0;
  CheckQuery(API_GetPDSensorData(laser, &least, &most, &mean),
             "Reading the photodiode of laser " + number);
  report.AddNumber("Photodiode, lowest", "laser/photodiode/minimum", least);
  report.AddNumber("Photodiode, highest", "laser/photodiode/maximum", most);
  report.AddNumber("Photodiode, mean", "laser/photodiode/average", mean);
  int unit = 0;
  int p[5] = {};
  CheckQuery(API_GetLSULaserPWMvalues(laser, &unit, &p[0], &p[1], &p[2], &p[3], &p[4]),
             "Reading the pulse widths of laser " + number);
  std::string widths;
  for (const int width : p) widths += (widths.empty() ? "" : " ") + std::to_string(width);
  report.Add("Pulse widths", widths, "laser/pulse_widths", p);
}

struct FlashRow {
  const char* label;
  const char* key;
};

// Both in the order of the library's outputs.
constexpr FlashRow kFlash[] = {
    {"Scan centre", "flash/scan_centre"},     {"Line length", "flash/line_length"},
    {"Polygon speed", "flash/polygon_speed"}, {"Start", "flash/start"},
    {"Trigger delay", "flash/trigger_delay"}, {"Line width", "flash/line_width"},
    {"Y offset", "flash/y_offset"},
};
constexpr FlashRow kThreeLineFlash[] = {
    {"Scan centre 1", "flash/scan_centre_1"},     {"Scan centre 2", "flash/scan_centre_2"},
    {"Scan centre 3", "flash/scan_centre_3"},     {"Line length 1", "flash/line_length_1"},
    {"Line length 2", "flash/line_length_2"},     {"Line length 3", "flash/line_length_3"},
    {"Trigger delay 1", "flash/trigger_delay_1"}, {"Trigger delay 2", "flash/trigger_delay_2"},
    {"Trigger delay 3", "flash/trigger_delay_3"}, {"Z offset 1", "flash/z_offset_1"},
    {"Z offset 2", "flash/z_offset_2"},
};

template <size_t Count>
void AddFlashRows(int result, const FlashRow (&rows)[Count], const int (&values)[Count],
                  FieldReport& report) {
  CheckQuery(result, "Reading the flash of the scan unit");
  for (size_t i = 0; i < Count; ++i) report.AddNumber(rows[i].label, rows[i].key, values[i]);
}

void AddFlash(FieldReport& report) {
  if (ReadIdentity().model == kThreeLineModel) {
    int v[std::size(kThreeLineFlash)] = {};
    const int result = API_GetLSUFlashParameterFX150(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5],
                                                     &v[6], &v[7], &v[8], &v[9], &v[10]);
    return AddFlashRows(result, kThreeLineFlash, v, report);
  }
  int v[std::size(kFlash)] = {};
  const int result = API_GetLSUFlashParameter(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6]);
  AddFlashRows(result, kFlash, v, report);
}

Action DeclareSensors(CLI::App& app) {
  const auto wanted = std::make_shared<WantedSensors>();
  app.add_option("--laser", wanted->laser, "Also the readings of this laser, from 1")
      ->type_name("N")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()).description(""));
  app.add_flag("--flash", wanted->flash, "Also the parameters in the scan unit's flash");
  return [wanted](Context& context) {
    OpenPrinter(context.choice);
    FieldReport report;
    AddSensors(*wanted, report);
    AddReposition(report);
    if (wanted->laser) AddLaser(*wanted->laser, report);
    if (wanted->flash) AddFlash(report);
    return report.Finish();
  };
}

Report RunTank(Context& context) {
  OpenPrinter(context.choice);
  int type = 0;
  CheckQuery(API_GetTankType(&type), "Reading the tank type");
  FieldReport report;
  report.Add("Tank", type == 0 ? "none" : std::to_string(type), "tank_type", type);
  return report.Finish();
}

Report RunLeds(Context& context) {
  OpenPrinter(context.choice);
  TextBuffer hours;
  CheckQuery(API_GetLedUseTime(hours.Data()), "Reading the use of the light source");
  FieldReport report;
  report.AddMeasure("Light source on", "led_hours", hours.Text(), " h");
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
