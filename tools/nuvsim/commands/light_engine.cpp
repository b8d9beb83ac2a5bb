// The light engine, the sensors and the self-test.

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr int kLasers = 4;

// The laser, counted from 1, that the request names behind `tag`.
std::optional<int> Laser(const Request& request, char tag) {
  const auto laser = OnlyNumber(request, tag);
  return laser && *laser >= 1 && *laser <= kLasers ? laser : std::nullopt;
}

// Readings differ between lasers, so that a host that asks for the wrong one notices.
std::string Photodiode(Machine&, const Request& request) {
  const auto laser = Laser(request, 'L');
  if (!laser) return "NG";
  return "OK L" + std::to_string(10 + *laser) + " H" + std::to_string(900 + *laser) + " A" +
         std::to_string(500 + *laser);
}

std::string PulseWidths(Machine&, const Request& request) {
  const auto laser = Laser(request, 'S');
  if (!laser) return "NG";
  std::string answer = "OK LSU:" + std::to_string(*laser);
  for (int place = 1; place <= 5; ++place) {
    answer += " P" + std::to_string(place) + ":" + std::to_string(100 * place + *laser);
  }
  return answer;
}

std::string Sensors(Machine& machine, const Request&) {
  const auto& readings = machine.Config().sensors;
  std::string answer = "OK";
  for (const Sensor& each : kSensorTable) {
    const auto told = readings.find(each.key);
    const int reading = told == readings.end() ? each.usual : told->second;
    answer += std::string(" ") + each.key + ":" + std::to_string(reading);
  }
  return answer;
}

std::string ScanUnitFlash(Machine& machine, const Request&) {
  return machine.GetModel().HasThreeScanLines()
             ? "OK C1:1 C2:2 C3:3 L1:4 L2:5 L3:6 T1:7 T2:8 T3:9 Z1:10 Z2:11"
             : "OK C:1 L:2 P:3 S:4 T:5 W:6 Y:7";
}

std::string LightHours(Machine& machine, const Request&) {
  return "OK H:" + std::to_string(machine.Config().ledHours);
}

// "S<axis> C<cycles>". Over at once, so both lines come together.
std::string SelfTest(Machine&, const Request& request) {
  const auto& parameters = request.parameters;
  if (parameters.size() != 2 || Behind("S", parameters[0]).value_or("").empty()) return "NG";
  if (TaggedNumber(request, 1, 'C').value_or(0) < 1) return "NG";
  return "OK START\r\n" + std::string(request.head) + " OK FINISH";
}

}  // namespace

const CommandTable& LightEngineCommands() {
  static const CommandTable kTable = {
      {160, Feature::kAll, SelfTest},      {186, Feature::kLsu, Photodiode},
      {301, Feature::kSensors, Sensors},   {303, Feature::kLsu, PulseWidths},
      {327, Feature::kLsu, ScanUnitFlash}, {708, Feature::kLed, LightHours},
  };
  return kTable;
}

}  // namespace NuvSim
