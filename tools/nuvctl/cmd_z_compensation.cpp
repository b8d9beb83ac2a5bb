#include <CLI/CLI.hpp>

#include "field_report.h"
#include "setting.h"

namespace nuvctl {
namespace {

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

}  // namespace

Action DeclareZCompensation(CLI::App& app) {
  const auto micrometres = std::make_shared<std::optional<int>>();
  app.add_option("MICROMETRES", *micrometres,
                 "The new compensation, may be negative; without it the compensation is shown")
      ->type_name("");
  return SettingAction(kZCompensation, micrometres);
}

}  // namespace nuvctl
