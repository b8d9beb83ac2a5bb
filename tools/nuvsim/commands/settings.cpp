// What hosts set and read back.

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr double kMaxScaling = 10;

// The whole numbers that share one command, by their number in it.
using Value = int Settings::*;
struct SettingRow {
  int number;
  Feature needs;
  int low;
  int high;
  Value value;
};

constexpr SettingRow kSettings[] = {
    {0, Feature::kLaser, 0, 100, &Settings::laserPower},
    {1, Feature::kAll, -500, 500, &Settings::zCompensation},
};

const SettingRow* FindSetting(const Machine& machine, std::optional<int> number) {
  const auto* row =
      std::find_if(std::begin(kSettings), std::end(kSettings),
                   [number](const SettingRow& each) { return each.number == number; });
  if (row == std::end(kSettings) || !machine.GetModel().Has(row->needs)) return nullptr;
  return row;
}

std::string ReadSetting(Machine& machine, const Request& request) {
  const SettingRow* row = FindSetting(machine, OnlyNumber(request, 'S'));
  if (row == nullptr) return "NG";
  return "OK S" + std::to_string(row->number) + " V" +
         std::to_string(machine.GetSettings().*row->value);
}

std::string ChangeSetting(Machine& machine, const Request& request) {
  const SettingRow* row = FindSetting(machine, TaggedNumber(request, 0, 'S'));
  const auto value = TaggedNumber(request, 1, 'V');
  if (row == nullptr || request.parameters.size() != 2) return "NG";
  if (!value || *value < row->low || *value > row->high) return "NG";
  machine.GetSettings().*row->value = *value;
  return "OK";
}

std::string ChangeNickname(Machine& machine, const Request& request) {
  if (!request.rest) return "NG";
  machine.GetSettings().nickname = *request.rest;
  return "OK";
}

std::string Nickname(Machine& machine, const Request&) {
  return "OK N:" + machine.GetSettings().nickname;
}

std::string ReadScaling(Machine& machine, const Request&) {
  const auto& factors = machine.GetSettings().scaling;
  char fields[128];
  std::snprintf(fields, sizeof fields, "OK X:%.6f,%.6f Y:%.6f,%.6f Z:%.6f,%.6f", factors[0],
                factors[1], factors[2], factors[3], factors[4], factors[5]);
  return fields;
}

// All six or none.
std::string ChangeScaling(Machine& machine, const Request& request) {
  constexpr std::string_view kAxes = "XYZ";
  if (request.parameters.size() != kAxes.size()) return "NG";
  auto factors = machine.GetSettings().scaling;
  for (size_t axis = 0; axis < kAxes.size(); ++axis) {
    const auto pair = Behind(kAxes.substr(axis, 1), request.parameters[axis]);
    if (!pair) return "NG";
    const size_t comma = std::min(pair->find(','), pair->size());
    const auto first = ParseNumber<double>(pair->substr(0, comma));
    const auto second = ParseNumber<double>(pair->substr(std::min(comma + 1, pair->size())));
    for (const auto& factor : {first, second}) {
      if (!factor || !(*factor > 0 && *factor <= kMaxScaling)) return "NG";
    }
    factors[2 * axis] = *first;
    factors[2 * axis + 1] = *second;
  }
  machine.GetSettings().scaling = factors;
  return "OK";
}

}  // namespace

const CommandTable& SettingsCommands() {
  static const CommandTable kTable = {
      {159, Feature::kAll, ReadSetting}, {196, Feature::kAll, ChangeNickname},
      {197, Feature::kAll, Nickname},    {332, Feature::kAll, ChangeSetting},
      {369, Feature::kAll, ReadScaling}, {370, Feature::kAll, ChangeScaling},
  };
  return kTable;
}

}  // namespace NuvSim
