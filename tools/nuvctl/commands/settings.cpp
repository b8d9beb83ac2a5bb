#include "commands/settings.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>

#include "commands/commands.h"
#include "target.h"

namespace NuvCtl {
namespace {

// ---- Whole numbers

// What a person may write, told in the help and in every error.
struct Range {
  const char* what;  // "laser power"
  int least, most;
  const char* unit;  // "percent"

  std::string Words() const {
    return std::string(unit) + ", " + std::to_string(least) + " to " + std::to_string(most);
  }
};

constexpr Range kPowerRange = {"laser power", 0, 100, "percent"};
constexpr Range kCompensationRange = {"Z compensation", -500, 500, "micrometres"};

int NumberOf(const std::string& text, const Range& range) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (!text.empty() && error == std::errc() && rest == end && number >= range.least &&
      number <= range.most) {
    return number;
  }
  throw UsageError("\"" + text + "\" is no " + range.what,
                   "Write a whole number, " + range.Words() + ".");
}

template <const Setting<int>& TheSetting, const Range& TheRange>
Action DeclareNumber(CLI::App& app) {
  const auto text = std::make_shared<std::optional<std::string>>();
  app.add_option("NEW", *text, "The new value, " + TheRange.Words() + "; without it, it is shown")
      ->type_name("");
  return [text](const Context& context) {
    std::optional<int> wanted;
    if (*text) wanted = NumberOf(**text, TheRange);
    Target target = wanted ? OpenToChange(context) : OpenTarget(context);
    return ShowOrSet(TheSetting, target, wanted);
  };
}

Report ShowPower(const int& percent) {
  FieldReport report;
  report.AddNumber("Laser power", "laser_power_percent", percent, " %");
  return report.Finish();
}

const Setting<int> kLaserPower = {"the laser power",
                                  "Not every model has a laser.",
                                  &nuv::Printer::SetLaserPowerPercent,
                                  &nuv::Printer::GetLaserPowerPercent,
                                  Equal<int>,
                                  ShowPower};

Report ShowCompensation(const int& micrometres) {
  FieldReport report;
  report.AddNumber("Z compensation", "z_compensation_um", micrometres, kMicrometres);
  return report.Finish();
}

const Setting<int> kZCompensation = {"the Z compensation",
                                     "Not every model has one.",
                                     &nuv::Printer::SetZCompensationUm,
                                     &nuv::Printer::GetZCompensationUm,
                                     Equal<int>,
                                     ShowCompensation};

// ---- Nickname

struct NicknameOptions {
  std::optional<std::string> name;
  bool clear = false;
};

// Printers make one blank of several.
std::string Squeezed(const std::string& text) {
  std::string squeezed;
  for (const char c : text) {
    if (c != ' ' || (!squeezed.empty() && squeezed.back() != ' ')) squeezed += c;
  }
  if (!squeezed.empty() && squeezed.back() == ' ') squeezed.pop_back();
  return squeezed;
}

Report ShowNickname(const std::optional<std::string>& name) {
  FieldReport report;
  report.Add("Nickname", name.value_or("?"), "nickname",
             name ? nlohmann::ordered_json(*name) : nlohmann::ordered_json());
  return report.Finish();
}

std::string ReadNickname(Target& target) {
  const nuv::Identity who = target.Ask("Reading the nickname", &nuv::Printer::GetIdentity);
  if (who.nickname) return *who.nickname;
  throw CommandError("refused", kPrinterFailed,
                     "Reading the nickname failed: this printer does not have one",
                     "'nuvctl info' shows which model this is.");
}

Report RunNickname(const Context& context, const NicknameOptions& options) {
  if (options.name) {
    RequireOneLine(*options.name, "The nickname");
    if (Squeezed(*options.name).empty()) {
      throw UsageError("The nickname is blank", "--clear takes the nickname away.");
    }
  }
  const bool sets = options.name || options.clear;
  Target target = sets ? OpenToChange(context) : OpenTarget(context);
  const std::string before = ReadNickname(target);
  if (!sets) return ShowNickname(before);
  const std::string wanted = options.name.value_or("");
  target.Tell("Setting the nickname", "Try a shorter one, without special characters.",
              &nuv::Printer::SetNickname, wanted);
  const std::string actual = ReadNickname(target);
  if (actual != Squeezed(wanted)) throw NotConfirmed("the nickname", ShowNickname(actual));
  return WithEarlier(ShowNickname(actual), ShowNickname(before));
}

Action DeclareNickname(CLI::App& app) {
  const auto options = std::make_shared<NicknameOptions>();
  CLI::Option* const name =
      app.add_option("NEW", options->name, "The new nickname; without it the nickname is shown")
          ->type_name("");
  app.add_flag("--clear", options->clear, "Take the nickname away")->excludes(name);
  return [options](const Context& context) { return RunNickname(context, *options); };
}

// ---- Scaling

constexpr size_t kFactors = 6;
constexpr const char* kLabels[kFactors] = {"X1", "X2", "Y1", "Y2", "Z1", "Z2"};
constexpr const char* kKeys[kFactors] = {"x1", "x2", "y1", "y2", "z1", "z2"};
constexpr char kFactorsHint[] =
    "Give X1 X2 Y1 Y2 Z1 Z2, factors above 0 and at most 10, with a point: 1.002 1.002 1 1 1 1.";

double& Factor(nuv::Scaling& scaling, size_t i) {
  double* const axes[] = {scaling.x, scaling.y, scaling.z};
  return axes[i / 2][i % 2];
}

double Factor(const nuv::Scaling& scaling, size_t i) {
  const double* const axes[] = {scaling.x, scaling.y, scaling.z};
  return axes[i / 2][i % 2];
}

// Printers keep six decimals.
bool SameScaling(const nuv::Scaling& wanted, const nuv::Scaling& actual) {
  constexpr double kTolerance = 2e-6;
  for (size_t i = 0; i < kFactors; ++i) {
    if (std::fabs(Factor(wanted, i) - Factor(actual, i)) > kTolerance) return false;
  }
  return true;
}

Report ShowScaling(const nuv::Scaling& scaling) {
  constexpr double kDecimals = 1e6;
  FieldReport report;
  for (size_t i = 0; i < kFactors; ++i) {
    const nlohmann::ordered_json factor = std::round(Factor(scaling, i) * kDecimals) / kDecimals;
    report.Add(kLabels[i], factor.dump(), std::string("scaling/") + kKeys[i], factor);
  }
  return report.Finish();
}

const Setting<nuv::Scaling, const nuv::Scaling&> kScaling = {
    "the scaling",
    "Each factor must be above 0 and at most 10.",
    &nuv::Printer::SetScaling,
    &nuv::Printer::GetScaling,
    SameScaling,
    ShowScaling};

// With a point, whatever the locale.
double FactorOf(const std::string& text, size_t i) {
  constexpr double kMost = 10;
  double factor = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, factor);
  if (error == std::errc() && rest == end && factor > 0 && factor <= kMost) return factor;
  throw UsageError("\"" + text + "\" is no factor for " + kLabels[i], kFactorsHint);
}

// Nothing when nothing was given.
std::optional<nuv::Scaling> ScalingOf(const std::vector<std::string>& texts) {
  if (texts.empty()) return std::nullopt;
  if (texts.size() != kFactors) {
    throw UsageError("The scaling has six factors, not " + std::to_string(texts.size()),
                     kFactorsHint);
  }
  nuv::Scaling scaling;
  for (size_t i = 0; i < kFactors; ++i) Factor(scaling, i) = FactorOf(texts[i], i);
  return scaling;
}

// A factor that changes a part by more than a tenth is rarely meant.
void AskForOddFactors(const Context& context, const nuv::Scaling& scaling) {
  constexpr double kUsual = 0.1;
  for (size_t i = 0; i < kFactors; ++i) {
    if (std::fabs(Factor(scaling, i) - 1) <= kUsual) continue;
    RequireSomebodyToAsk(context, "A factor that is off by more than a tenth");
    return RequireConsent(context,
                          std::string(kLabels[i]) + " is off by more than a tenth. Set it? [y/N] ",
                          "Not set");
  }
}

Action DeclareScaling(CLI::App& app) {
  const auto factors = std::make_shared<std::vector<std::string>>();
  // CLI11 takes no name with blanks in it.
  app.add_option("FACTORS", *factors,
                 "The six new factors, above 0 and at most 10; without them they are shown")
      ->option_text("X1 X2 Y1 Y2 Z1 Z2");
  return [factors](const Context& context) {
    const std::optional<nuv::Scaling> wanted = ScalingOf(*factors);
    if (wanted) AskForOddFactors(context, *wanted);
    Target target = wanted ? OpenToChange(context) : OpenTarget(context);
    return ShowOrSet(kScaling, target, wanted);
  };
}

}  // namespace

CommandError NotConfirmed(const std::string& name, const Report& actual) {
  return CommandError("not_confirmed", kPrinterFailed,
                      "The printer accepted " + name + ", but then told another value",
                      "That is what it has now; check at its panel, then set it again.", actual);
}

Report WithEarlier(Report report, const Report& earlier) {
  std::string was = earlier.text;
  if (std::count(was.begin(), was.end(), '\n') == 1) {
    was = was.substr(was.find_last_of(':') + 1);
    was.erase(0, was.find_first_not_of(' '));
    report.text.pop_back();
    report.text += " (was " + was.substr(0, was.size() - 1) + ")\n";
  } else {
    report.text += "It was:\n" + was;
  }
  report.json["was"] = earlier.json;
  return report;
}

Subcommands SettingsCommands() {
  return {{"nickname", "Show or set the nickname", "nuvctl nickname \"Lab one\"", DeclareNickname},
          {"laser-power", "Show or set the laser power", "nuvctl laser-power 80",
           DeclareNumber<kLaserPower, kPowerRange>},
          {"z-compensation", "Show or set the Z compensation", "nuvctl z-compensation -20",
           DeclareNumber<kZCompensation, kCompensationRange>},
          {"scaling", "Show or set the scaling of the build",
           "nuvctl scaling 1.002 1.002 0.998 0.998 1 1", DeclareScaling}};
}

}  // namespace NuvCtl
