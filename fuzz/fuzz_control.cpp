// Carries the input out as requests to a simulator, a line each, as its control server does.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/targets.h"
#include "nuvsim/control/language.h"

namespace {

// It never listens; nothing of it is on the network.
NuvSim::Simulator& OnePrinter() {
  static NuvSim::Simulator simulator([] {
    NuvSim::SimulatorConfig config;
    config.printers = {NuvSim::LoopbackPrinter()};
    return config;
  }());
  return simulator;
}

// As it was before the input.
void Reset(NuvSim::Simulator& simulator) {
  simulator.ClearFaults(0);
  simulator.SetIdle(0);
  simulator.SetResinRefusal(0, std::nullopt);
  simulator.SetTagRegistered(0, true);
  simulator.SetRepositioning(0, false);
}

}  // namespace

void Fuzz::Control(const uint8_t* data, size_t size) {
  NuvSim::Simulator& simulator = OnePrinter();
  std::string_view lines(reinterpret_cast<const char*>(data), size);
  while (!lines.empty()) {
    const std::string line(lines.substr(0, lines.find('\n')));
    lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    const NuvSim::ControlAnswer answer = NuvSim::ControlSimulator(simulator, line);
    Require(answer.line.find('\n') == std::string::npos, "an answer is one line");
    Require(nlohmann::json::accept(answer.line), "an answer is JSON");
    const bool failed = answer.line.rfind(R"({"error":)", 0) == 0;
    Require(failed != (answer.line.find(R"("ok":true)") != std::string::npos), "it is one of both");
    Require(!(failed && answer.quits), "what failed does not quit");
  }
  Reset(simulator);
}
