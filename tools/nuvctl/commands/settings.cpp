#include "commands/settings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "commands/commands.h"
#include "printer.h"

namespace NuvCtl {
namespace {

// What runs a subcommand that is nothing but a setting. `setting` must outlive it; `wanted` is
// there after parsing when the user gave a new value.
template <typename Value>
Action SettingAction(const Setting<Value>& setting,
                     const std::shared_ptr<std::optional<Value>>& wanted) {
  return [&setting, wanted](Context& context) {
    OpenPrinter(context.choice);
    return ShowOrSet(setting, *wanted);
  };
}

int ReadNickname(std::string& name) {
  TextBuffer text;
  const int result = API_GetNickName(text.Data());
  name = text.Text();
  return result;
}

Report ShowNickname(const std::string& name) {
  FieldReport report;
  report.AddText("Nickname", "nickname", name);
  return report.Finish();
}

constexpr Setting<std::string> kNickname = {
    "the nickname",
    "Try a shorter one, without special characters.",
    [](const std::string& name) { return API_SetNickName(name.c_str()); },
    ReadNickname,
    Equal<std::string>,
    ShowNickname};

Action DeclareNickname(CLI::App& app) {
  const auto name = std::make_shared<std::optional<std::string>>();
  app.add_option("NEW", *name, "The new nickname; without it the nickname is shown")->type_name("");
  const Action action = SettingAction(kNickname, name);
  return [name, action](Context& context) {
    if (*name) RequireOneLine(**name, "The nickname");
    return action(context);
  };
}

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

Action DeclareLaserPower(CLI::App& app) {
  const auto percent = std::make_shared<std::optional<int>>();
  app.add_option("PERCENT", *percent, "The new power; without it the power is shown")
      ->type_name("");
  return SettingAction(kLaserPower, percent);
}

Report ShowCompensation(const int& micrometres) {
  FieldReport report;
  report.AddNumber("Z compensation", "z_compensation_um", micrometres, kMicrometres);
  return report.Finish();
}

constexpr Setting<int> kZCompensation = {
    "the Z compensation",
    "It goes from -500 to 500 micrometres.",
    [](const int& micrometres) { return API_SetZCompensation(micrometres); },
    [](int& micrometres) { return API_GetZCompensation(&micrometres); },
    Equal<int>,
    ShowCompensation};

Action DeclareZCompensation(CLI::App& app) {
  const auto micrometres = std::make_shared<std::optional<int>>();
  app.add_option("MICROMETRES", *micrometres,
                 "The new compensation, may be negative; without it the compensation is shown")
      ->type_name("");
  return SettingAction(kZCompensation, micrometres);
}

constexpr size_t kFactors = 6;
constexpr const char* kLabels[kFactors] = {"X1", "X2", "Y1", "Y2", "Z1", "Z2"};
constexpr const char* kKeys[kFactors] = {"x1", "x2", "y1", "y2", "z1", "z2"};
using Scaling = std::array<float, kFactors>;

int WriteScaling(const Scaling& f) { return API_SetBCPScaling(f[0], f[1], f[2], f[3], f[4], f[5]); }

int ReadScaling(Scaling& f) { return API_GetBCPScaling(&f[0], &f[1], &f[2], &f[3], &f[4], &f[5]); }

// Printers keep six decimals, and a float near the largest factor has no more than that.
bool SameScaling(const Scaling& wanted, const Scaling& actual) {
  constexpr float kTolerance = 2e-6F;
  return std::equal(wanted.begin(), wanted.end(), actual.begin(),
                    [](float a, float b) { return std::fabs(a - b) <= kTolerance; });
}

Report ShowScaling(const Scaling& scaling) {
  constexpr double kDecimals = 1e6;
  FieldReport report;
  for (size_t i = 0; i < kFactors; ++i) {
    // Rounded, so that the float nearest to 1.1 shows as 1.1.
    const nlohmann::ordered_json factor =
        std::round(static_cast<double>(scaling[i]) * kDecimals) / kDecimals;
    report.Add(kLabels[i], factor.dump(), std::string("scaling/") + kKeys[i], factor);
  }
  return report.Finish();
}

constexpr Setting<Scaling> kScaling = {"the scaling", "Each factor must be above 0 and at most 10.",
                                       WriteScaling,  ReadScaling,
                                       SameScaling,   ShowScaling};

// Empty when nothing was given.
std::optional<Scaling> ScalingOf(const std::vector<float>& factors) {
  if (factors.empty()) return std::nullopt;
  if (!std::all_of(factors.begin(), factors.end(), [](float f) { return std::isfinite(f); })) {
    throw CommandError("usage", kUsage, "A scaling factor is not a number",
                       "Give six numbers, such as 1.002 1.002 1 1 1 1.");
  }
  Scaling scaling{};
  std::copy_n(factors.begin(), kFactors, scaling.begin());
  return scaling;
}

Action DeclareScaling(CLI::App& app) {
  const auto factors = std::make_shared<std::vector<float>>();
  // CLI11 takes no name with blanks in it.
  app.add_option("FACTORS", *factors, "The six new factors; without them the factors are shown")
      ->expected(static_cast<int>(kFactors))
      ->option_text("X1 X2 Y1 Y2 Z1 Z2");
  return [factors](Context& context) {
    const std::optional<Scaling> wanted = ScalingOf(*factors);
    OpenPrinter(context.choice);
    return ShowOrSet(kScaling, wanted);
  };
}

}  // namespace

CommandError NotConfirmed(const std::string& name, const Report& actual) {
  return CommandError("not_confirmed", kPrinterFailed,
                      "The printer accepted " + name + ", but then told another value",
                      "That is what it has now; check at its panel, then set it again.", actual);
}

Subcommands SettingsCommands() {
  return {
      {"nickname", "Show or set the nickname", "nuvctl nickname \"Lab one\"", DeclareNickname},
      {"laser-power", "Show or set the laser power", "nuvctl laser-power 80", DeclareLaserPower},
      {"z-compensation", "Show or set the Z compensation", "nuvctl z-compensation -20",
       DeclareZCompensation},
      {"scaling", "Show or set the scaling of the build",
       "nuvctl scaling 1.002 1.002 0.998 0.998 1 1", DeclareScaling}};
}

}  // namespace NuvCtl
