// Searching, and making and destroying the framework.

#include <cstdio>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "nuvconnect/NuvConnect5.h"
#include "nuvsim/simulator.h"
#include "transport/network_device_searcher.h"

namespace Bench {
namespace {

constexpr uint16_t kPort = 6013;
constexpr int kNetworks = 2;
constexpr int kTimeoutMs = 1000;
constexpr uint64_t kBurst = 1000;
constexpr int kFrameworks = 200;

}  // namespace

void RunDiscovery() {
  std::printf("Discovery on %d networks, and the framework's life\n", kNetworks);
  const std::vector<double> silence =
      Sample(3, [] { NetworkDeviceSearcher("F195\r\n").Search(kPort, kTimeoutMs); });
  Report("search without answers over its time limit, per network",
         Quantile(silence, 0.5) / 1e6 / (kTimeoutMs * kNetworks), "times", 1.02);

  NuvSim::SimulatorConfig config;
  NuvSim::PrinterConfig printer;
  printer.address = "10.77.1.2";
  NuvSim::Fault burst = NuvSim::MakeFault(NuvSim::FaultKind::kBurst);
  burst.size = kBurst;
  printer.faults = {burst};
  config.printers = {printer};
  config.discovery = true;
  NuvSim::Simulator simulator(std::move(config));
  simulator.Start();
  size_t found = 0;
  const std::vector<double> busy = Sample(
      1, [&] { found = NetworkDeviceSearcher("F195\r\n").Search(kPort, kTimeoutMs).size(); });
  // The printer's own answer comes behind the burst.
  Report("burst of 1000 distinct replies: lost", static_cast<double>(kBurst + 1 - found), "replies",
         0.5);
  Report("search with that burst over its time limit, per network",
         busy[0] / 1e6 / (kTimeoutMs * kNetworks), "times", 1.02);

  const std::vector<double> life = Sample(kFrameworks, [] {
    API_Initial();
    API_Close();
  });
  Report("API_Initial and API_Close, median", Quantile(life, 0.5) / 1e6, "ms", 1);
  Report("API_Initial and API_Close, longest", life.back() / 1e6, "ms");
}

}  // namespace Bench
