// The resin in place and its tag.

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

std::string ResinState(Machine& machine, const Request&) {
  const ResinConfig& resin = machine.Resin();
  if (resin.refusal) return "NG S:" + std::to_string(*resin.refusal);
  return "OK S:" + std::to_string(resin.state) + " R:" + std::to_string(resin.remainingMl) +
         " C:" + resin.code + " V:" + std::to_string(resin.tankMl) + " Q:" + resin.lot;
}

std::string EarlyResinState(Machine& machine, const Request&) {
  const ResinConfig& resin = machine.Resin();
  if (resin.refusal) return "NG S" + std::to_string(*resin.refusal);
  return "OK S" + std::to_string(resin.state) + " R" + std::to_string(resin.remainingMl) + " D" +
         resin.useBy + " T" + resin.type;
}

std::string DentalResin(Machine& machine, const Request&) {
  const ResinConfig& resin = machine.Resin();
  return "OK N:" + resin.name + " L:" + resin.lot + " D:" + resin.useBy +
         " V:" + std::to_string(resin.remainingMl);
}

std::string TagRegistered(Machine& machine, const Request&) {
  return machine.Resin().tagRegistered ? "OK" : "NG";
}

std::string OpenMode(Machine& machine, const Request&) {
  return std::string("OK S:") + (machine.Config().openMode ? "1" : "0");
}

}  // namespace

const CommandTable& ResinCommands() {
  static const CommandTable kTable = {
      {105, Feature::kResin105, ResinState},   {120, Feature::kResin120, EarlyResinState},
      {219, Feature::kHistory, TagRegistered}, {335, Feature::kHistory, OpenMode},
      {356, Feature::kDental, DentalResin},
  };
  return kTable;
}

}  // namespace NuvSim
