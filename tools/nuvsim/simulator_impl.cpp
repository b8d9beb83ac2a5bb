#include "nuvsim/simulator_impl.h"

#include <algorithm>
#include <asio/ip/udp.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "nuvsim/addresses.h"

namespace NuvSim {
namespace {

SimulatorConfig Completed(SimulatorConfig config) {
  ValidateConfig(config);
  if (!config.clock) config.clock = [] { return std::chrono::steady_clock::now(); };
  if (!config.calendarStart) config.calendarStart = std::chrono::system_clock::now();
  return config;
}

// Whether a printer that listens on `address` (0: everywhere but on loopback) is on the network.
bool IsOn(const Ipv4Interface& network, uint32_t address) {
  if (address == 0) return !IsLoopback(network.address);
  return ((address ^ network.address) & network.netmask) == 0;
}

// This machine's address in what it sends to the whole network. A socket of ours for that address
// and the port of searches would take the answers that are meant for a host on this machine.
uint32_t SendsFrom(const Ipv4Interface& network) {
  asio::io_context io;
  asio::ip::udp::socket socket(io, asio::ip::udp::v4());
  asio::error_code failed;
  socket.set_option(asio::socket_base::broadcast(true), failed);
  socket.connect({asio::ip::address_v4(network.Broadcast()), 9}, failed);
  const auto local = socket.local_endpoint(failed);
  return failed ? network.address : local.address().to_v4().to_uint();
}

}  // namespace

Simulator::Impl::Impl(SimulatorConfig wanted) : commons(Completed(std::move(wanted))) {
  for (size_t i = 0; i < commons.config.printers.size(); ++i) {
    printers.push_back(std::make_unique<ServedPrinter>(commons, i, commons.config.printers[i]));
  }
}

Simulator::Impl::~Impl() { Stop(); }

void Simulator::Impl::Start() {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (std::exchange(started_, true)) throw std::logic_error("the simulator was started before");
  try {
    for (size_t i = 0; i < printers.size(); ++i) {
      printers[i]->Plug(commons.config.printers[i].port);
    }
    if (commons.config.discovery) ListenForSearches();
    if (commons.config.usbipPort) ServeUsb();
  } catch (...) {
    CloseAll();
    throw;
  }
  work_.emplace(commons.io.get_executor());
  thread_ = std::thread([this] { commons.io.run(); });
}

void Simulator::Impl::Stop() {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (!thread_.joinable()) return;
  commons.io.stop();
  thread_.join();
  CloseAll();
  commons.events.Notify();
}

void Simulator::Impl::CloseAll() {
  if (search_) search_->Close();
  if (usbip_) usbip_->Close();
  for (const auto& printer : printers) printer->Unplug();
}

void Simulator::Impl::Run(const std::function<void()>& action) {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (!thread_.joinable()) return;
  std::packaged_task<void()> task(action);
  std::future<void> done = task.get_future();
  asio::post(commons.io, [&task] { task(); });
  done.get();
  commons.events.Notify();
}

void Simulator::Impl::Unplug(size_t index) {
  Run([this, index] { printers[index]->Unplug(); });
}

void Simulator::Impl::Replug(size_t index) {
  Run([this, index] {
    ServedPrinter& printer = *printers[index];
    if (!printer.plugged) printer.Plug(printer.endpoint.Port());
  });
}

void Simulator::Impl::ClockChanged() {
  Run([this] {
    for (const auto& printer : printers) printer->ArmStepTimer();
  });
}

void Simulator::Impl::ClearFaults(size_t index) {
  Change(index, [](Dialogue& each) { each.Faults().Clear(); });
  Run([this, index] { printers[index]->FaultsCleared(); });
}

void Simulator::Impl::Change(size_t index, const std::function<void(Dialogue&)>& action) {
  commons.Locked([&] { action(printers.at(index)->dialogue); });
  commons.events.Notify();
}

// Every network that a printer is on, once; networks that share a broadcast address are one. And
// the printers' own addresses, each a network of one.
void Simulator::Impl::ListenForSearches() {
  for (const Ipv4Interface& each : RunningInterfaces()) {
    own_.push_back(each.address);
    if (each.netmask >= 0xfffffffeu) continue;  // a link of two has no broadcast address
    const bool isServed = std::any_of(printers.begin(), printers.end(), [&](const auto& printer) {
      return IsOn(each, printer->address);
    });
    const bool isKnown = std::any_of(networks_.begin(), networks_.end(), [&](const auto& network) {
      return network.Broadcast() == each.Broadcast();
    });
    if (isServed && !isKnown) networks_.push_back(each);
  }
  std::vector<Ipv4Interface> own;
  for (const Ipv4Interface& network : networks_) {
    for (const auto& printer : printers) {
      if (printer->address == 0 || !IsOn(network, printer->address)) continue;
      if (!IsLoopback(printer->address) && SendsFrom(network) == printer->address) continue;
      const bool isKnown = std::any_of(own.begin(), own.end(), [&](const auto& each) {
        return each.address == printer->address;
      });
      if (!isKnown) own.push_back({printer->address, 0xffffffffu});
    }
  }
  networks_.insert(networks_.end(), own.begin(), own.end());
  const uint16_t port = commons.config.discoveryPort;
  try {
    search_.emplace(commons.io, port, networks_,
                    [this](size_t network, uint32_t sender, std::string_view search) {
                      return Answer(network, sender, search);
                    });
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot listen for searches on port " + std::to_string(port) + ": " +
                             error.code().message());
  }
}

void Simulator::Impl::ServeUsb() {
  std::vector<UsbDevice*> bus;
  bus.reserve(printers.size());
  for (const auto& printer : printers) bus.push_back(&printer->usbDevice);
  const std::string& address = commons.config.usbipAddress;
  const uint16_t port = *commons.config.usbipPort;
  try {
    usbip_.emplace(commons.io, *ParseIpv4(address), port, std::move(bus));
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot serve USB/IP on " + FormatIpv4(*ParseIpv4(address)) + ":" +
                             std::to_string(port) + ": " + error.code().message());
  }
  commons.Locked([this] { usbipPort = usbip_->Port(); });
}

std::vector<std::vector<Delivery>> Simulator::Impl::Answer(size_t network, uint32_t sender,
                                                           std::string_view search) {
  const Ipv4Interface& on = networks_.at(network);
  // This machine searches on each of its networks; a printer that is on all of them has one address
  // there, as it has for any other machine.
  uint32_t everywhere = on.address;
  if (std::find(own_.begin(), own_.end(), sender) != own_.end()) {
    const auto first = std::find_if(networks_.begin(), networks_.end(),
                                    [](const Ipv4Interface& each) { return IsOn(each, 0); });
    if (first != networks_.end()) everywhere = first->address;
  }
  std::vector<std::vector<Delivery>> answers;
  commons.Locked([&] {
    for (size_t i = 0; i < printers.size(); ++i) {
      ServedPrinter& printer = *printers[i];
      if (!printer.plugged || !IsOn(on, printer.address)) continue;
      const std::string announced = FormatIpv4(printer.address == 0 ? everywhere : printer.address);
      answers.push_back(AnswerSearch(commons.config.printers[i], announced, printer.port,
                                     printer.dialogue.TakeSearch(), search));
    }
  });
  commons.events.Notify();
  return answers;
}

}  // namespace NuvSim
