// Identity, state and versions.

#include <cmath>

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr size_t kShortSerialLength = 6;

// The dental printer reports a short serial number with its identity, the whole one on request.
std::string IdentitySerial(const Machine& machine) {
  const std::string& serial = machine.Config().serial;
  if (!machine.GetModel().Has(Feature::kDental) || serial.size() <= kShortSerialLength) {
    return serial;
  }
  return serial.substr(serial.size() - kShortSerialLength);
}

std::string IdentityFields(const Machine& machine, const std::string& serial) {
  const PrinterConfig& config = machine.Config();
  return "V:" + config.firmware + " N:" + config.name + " M:" + config.model + " S:" + serial +
         " C:" + config.controllerVersion;
}

// With a blank ahead; empty unless printing.
std::string ProgressFields(Machine& machine) {
  const auto progress = machine.Printing();
  if (!progress) return "";
  return " L:" + std::to_string(progress->layer) + " T:" + std::to_string(progress->minutesLeft) +
         " R:Printing";
}

// While a print runs a second S follows: the state.
std::string Identity(Machine& machine, const Request&) {
  return "OK " + IdentityFields(machine, IdentitySerial(machine)) +
         (machine.Printing() ? " S:1" : "") + ProgressFields(machine);
}

std::string DentalIdentity(Machine& machine, const Request&) {
  return "OK " + IdentityFields(machine, machine.Config().serial) +
         " D:" + machine.Config().manufactured + ProgressFields(machine);
}

std::string PrinterState(Machine& machine, const Request&) {
  std::string answer = "OK " + StateField(machine);
  if (machine.CurrentState() == State::kError) {
    answer += " E:" + std::to_string(machine.ErrorNumber());
  } else if (const auto progress = machine.Printing()) {
    answer += " L:" + std::to_string(progress->layer) +
              " T:" + std::to_string(progress->minutesLeft) +
              " C:" + std::to_string(progress->percent) + "% R:" + progress->jobName;
  }
  return answer;
}

std::string JobTotals(Machine& machine, const Request&) {
  const JobRecord* job = machine.LastJob();
  if (job == nullptr) return "OK L:0 T:0";
  return "OK L:" + std::to_string(job->announced.layers) +
         " T:" + std::to_string(std::llround(job->announced.minutes)) + " R:" + job->name;
}

// The simulated printer is always warm.
std::string SkipWarmUp(Machine&, const Request&) { return "OK"; }

std::string WholeSerial(Machine& machine, const Request&) {
  return "OK S" + machine.Config().serial;
}

std::string Repositioning(Machine& machine, const Request&) {
  return std::string("OK R:") + (machine.IsRepositioning() ? "1" : "0");
}

std::string AndroidVersion(Machine& machine, const Request&) {
  return "OK V:" + machine.Config().androidVersion + " L:" + machine.Config().loaderVersion;
}

std::string PanelVersion(Machine& machine, const Request& request) {
  if (OnlyNumber(request, 'A') != 0) return "NG";
  return "OK V:" + machine.Config().panelVersion;
}

}  // namespace

const CommandTable& IdentityCommands() {
  static const CommandTable kTable = {
      {101, Feature::kAll, Identity},          {102, Feature::kAll, PrinterState},
      {107, Feature::kAll, JobTotals},         {112, Feature::kLaser, SkipWarmUp},
      {140, Feature::kDental, WholeSerial},    {310, Feature::kAndroid, AndroidVersion},
      {354, Feature::kDental, DentalIdentity}, {504, Feature::kAndroid, PanelVersion},
      {515, Feature::kAndroid, Repositioning},
  };
  return kTable;
}

}  // namespace NuvSim
