// Firmware: images of the engine, the LCM panel and the Android board.

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr uint64_t kPanelBytes = 21504;

// An image must not replace firmware that is at work.
bool IsBusy(Machine& machine) {
  const State state = machine.CurrentState();
  return state == State::kPrinting || state == State::kReceiving;
}

// "S<bytes>,<file name>"; the name goes to the end of the line.
std::string AnnounceEngine(Machine& machine, const Request& request) {
  const auto parameter = Behind("S", request.rest.value_or(""));
  const size_t comma = parameter ? parameter->find(',') : std::string_view::npos;
  if (comma == std::string_view::npos || IsBusy(machine)) return "NG";
  const auto bytes = ParseNumber<uint64_t>(parameter->substr(0, comma));
  if (bytes.value_or(0) == 0) return "NG";
  machine.GetIntake().ExpectImage("engine", *bytes, std::string(parameter->substr(comma + 1)));
  return "OK";
}

std::string OpenPanelUpdate(Machine& machine, const Request& request) {
  const auto name = Behind("S", request.rest.value_or(""));
  if (!name || name->empty() || IsBusy(machine)) return "NG";
  machine.GetIntake().ExpectImage("panel", kPanelBytes, std::string(*name));
  return "OK";
}

// Makes a complete image the firmware; more than once, since the answer may get lost.
bool Start(Machine& machine, std::string_view kind) {
  ReceivedItem* image = machine.GetIntake().Last(kind);
  if (image == nullptr || !image->complete || IsBusy(machine)) return false;
  image->started = true;
  return true;
}

std::string EndPanelUpdate(Machine& machine, const Request&) {
  return Start(machine, "panel") ? "OK RDone" : "NG RIncomplete";
}

// "S<kind> A<bytes> C<file name>"; the name goes to the end of the line.
std::string AnnounceAndroid(Machine& machine, const Request& request) {
  const std::string_view rest = request.rest.value_or("");
  const size_t name = rest.find(" C");
  if (name == std::string_view::npos || request.parameters.size() < 3 || IsBusy(machine)) {
    return "NG";
  }
  const auto kind = Behind("S", request.parameters[0]);
  const auto size = Behind("A", request.parameters[1]);
  const auto bytes = ParseNumber<uint64_t>(size.value_or(""));
  if (!kind || !ParseNumber<uint64_t>(*kind) || bytes.value_or(0) == 0) return "NG";
  machine.GetIntake().ExpectFrames("android", *bytes, std::string(rest.substr(name + 2)));
  return "OK";
}

std::string StartAndroid(Machine& machine, const Request&) {
  return Start(machine, "android") ? "OK" : "NG";
}

}  // namespace

const CommandTable& FirmwareCommands() {
  static const CommandTable kTable = {
      {141, Feature::kAll, AnnounceEngine},     {188, Feature::kAndroid, OpenPanelUpdate},
      {189, Feature::kAndroid, EndPanelUpdate}, {506, Feature::kAndroid, AnnounceAndroid},
      {507, Feature::kAndroid, StartAndroid},
  };
  return kTable;
}

}  // namespace NuvSim
