#include "nuvsim/simulator_impl.h"

#include <algorithm>
#include <asio/post.hpp>
#include <future>
#include <system_error>
#include <utility>

#include "nuvsim/config_file.h"
#include "nuvsim/ipv4.h"

namespace nuvsim {
namespace {

constexpr std::chrono::nanoseconds kShortestStep = std::chrono::milliseconds(1);

const SimulatorConfig& Checked(const SimulatorConfig& config) {
  ValidateConfig(config);
  return config;
}

std::string Place(std::uint32_t address, std::uint16_t port) {
  return FormatIpv4(address) + ":" + std::to_string(port);
}

}  // namespace

Simulator::Impl::Device::Device(Impl& simulator, std::size_t index, PrinterConfig printerConfig)
    : owner(simulator),
      printer(printerConfig, simulator.config.clock, *simulator.config.calendarStart,
              simulator.folder.Path(), "printer" + std::to_string(index),
              simulator.config.log
                  ? Printer::Log([&simulator, index](bool isReply, std::string_view text) {
                      simulator.config.log({index, isReply, std::string(text)});
                    })
                  : Printer::Log()),
      address(ParseIpv4(printerConfig.address).value_or(0)),
      network(*this, Channel::kNetwork),
      usb(*this, Channel::kUsb),
      endpoint(simulator.io, network),
      usbDevice(simulator.io, usb, index, *ParseUsbId(printerConfig.usbId), printerConfig.model,
                printerConfig.serial),
      stepTimer(simulator.io) {}

void Simulator::Impl::Way::ClientCame(std::uint32_t at) {
  {
    const std::lock_guard<std::mutex> lock(device.owner.stateMutex);
    device.printer.ClientCame(channel, at);
  }
  device.owner.events.Notify();
}

Reaction Simulator::Impl::Way::Receive(std::string_view bytes) {
  Reaction reaction;
  {
    const std::lock_guard<std::mutex> lock(device.owner.stateMutex);
    reaction = device.printer.Receive(channel, bytes);
  }
  device.ArmStepTimer();
  device.owner.events.Notify();
  return reaction;
}

void Simulator::Impl::Way::AnswerSent() {
  {
    const std::lock_guard<std::mutex> lock(device.owner.stateMutex);
    device.printer.AnswerSent();
  }
  device.owner.events.Notify();
}

void Simulator::Impl::Way::ClientLeft() {
  {
    const std::lock_guard<std::mutex> lock(device.owner.stateMutex);
    device.printer.ClientLeft(channel);
  }
  device.ArmStepTimer();
  device.owner.events.Notify();
}

std::optional<std::chrono::milliseconds> Simulator::Impl::Way::TakeRefusal() {
  std::optional<std::chrono::milliseconds> refusal;
  {
    const std::lock_guard<std::mutex> lock(device.owner.stateMutex);
    refusal = device.printer.TakeRefusal();
  }
  device.owner.events.Notify();
  return refusal;
}

void Simulator::Impl::Device::ArmStepTimer() {
  std::optional<std::chrono::nanoseconds> next;
  {
    const std::lock_guard<std::mutex> lock(owner.stateMutex);
    next = printer.TimeToNextStep();
  }
  if (!next) return;
  stepTimer.expires_after(std::max(*next, kShortestStep));
  stepTimer.async_wait([this](const asio::error_code& error) {
    if (error) return;
    ArmStepTimer();
    owner.events.Notify();
  });
}

void Simulator::Impl::Device::Listen(std::uint16_t wantedPort) {
  try {
    endpoint.Listen(address, wantedPort);
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot listen on " + Place(address, wantedPort) + ": " +
                             error.code().message());
  }
  usbDevice.Plug();
  const std::lock_guard<std::mutex> lock(owner.stateMutex);
  port = endpoint.Port();
  plugged = true;
}

void Simulator::Impl::Device::Unplug() {
  endpoint.Close();
  usbDevice.Unplug();
  const std::lock_guard<std::mutex> lock(owner.stateMutex);
  plugged = false;
}

Simulator::Impl::Impl(SimulatorConfig wanted)
    : config(std::move(wanted)), folder(Checked(config).jobFolder) {
  if (!config.clock) config.clock = [] { return std::chrono::steady_clock::now(); };
  if (!config.calendarStart) config.calendarStart = std::chrono::system_clock::now();
  for (std::size_t i = 0; i < config.printers.size(); ++i) {
    devices.push_back(std::make_unique<Device>(*this, i, config.printers[i]));
  }
}

Simulator::Impl::~Impl() { Stop(); }

void Simulator::Impl::Start() {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (std::exchange(started_, true)) throw std::logic_error("the simulator was started before");
  try {
    for (const auto& device : devices) device->Listen(device->printer.GetMachine().Config().port);
    if (config.discovery) ListenForSearches();
    if (config.usbipPort) ServeUsb();
  } catch (...) {
    CloseAll();
    throw;
  }
  work_.emplace(io.get_executor());
  thread_ = std::thread([this] { io.run(); });
}

void Simulator::Impl::Stop() {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (!thread_.joinable()) return;
  io.stop();
  thread_.join();
  CloseAll();
  events.Notify();
}

void Simulator::Impl::CloseAll() {
  if (search_) search_->Close();
  if (usbip_) usbip_->Close();
  for (const auto& device : devices) device->Unplug();
}

void Simulator::Impl::Run(const std::function<void()>& action) {
  const std::lock_guard<std::mutex> life(lifeMutex_);
  if (!thread_.joinable()) return;
  std::packaged_task<void()> task(action);
  std::future<void> done = task.get_future();
  asio::post(io, [&task] { task(); });
  done.get();
  events.Notify();
}

void Simulator::Impl::Unplug(std::size_t index) {
  Run([this, index] { devices[index]->Unplug(); });
}

void Simulator::Impl::Replug(std::size_t index) {
  Run([this, index] {
    Device& device = *devices[index];
    if (!device.plugged) device.Listen(device.endpoint.Port());
  });
}

void Simulator::Impl::ClockChanged() {
  Run([this] {
    for (const auto& device : devices) device->ArmStepTimer();
  });
}

void Simulator::Impl::ClearFaults(std::size_t index) {
  Change(index, [](Printer& each) { each.Faults().Clear(); });
  Run([this, index] {
    devices[index]->endpoint.FaultsCleared();
    devices[index]->usbDevice.pipe.FaultsCleared();
  });
}

void Simulator::Impl::Change(std::size_t index, const std::function<void(Printer&)>& action) {
  {
    const std::lock_guard<std::mutex> lock(stateMutex);
    action(devices.at(index)->printer);
  }
  events.Notify();
}

// Every network that a printer is on, once; networks that share a broadcast address are one.
void Simulator::Impl::ListenForSearches() {
  for (const Ipv4Interface& each : RunningInterfaces()) {
    if (each.netmask >= 0xfffffffeu) continue;  // a link of two has no broadcast address
    const bool isServed = std::any_of(devices.begin(), devices.end(), [&](const auto& device) {
      return device->address == 0 ? !IsLoopback(each.address)
                                  : ((device->address ^ each.address) & each.netmask) == 0;
    });
    const bool isKnown = std::any_of(networks_.begin(), networks_.end(), [&](const auto& network) {
      return network.Broadcast() == each.Broadcast();
    });
    if (isServed && !isKnown) networks_.push_back(each);
  }
  try {
    search_.emplace(io, config.discoveryPort, networks_,
                    [this](std::size_t network, std::string_view datagram) {
                      return AnswerSearch(network, datagram);
                    });
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot listen for searches on port " +
                             std::to_string(config.discoveryPort) + ": " + error.code().message());
  }
}

void Simulator::Impl::ServeUsb() {
  std::vector<UsbDevice*> bus;
  for (const auto& device : devices) bus.push_back(&device->usbDevice);
  const std::uint32_t address = *ParseIpv4(config.usbipAddress);
  try {
    usbip_.emplace(io, address, *config.usbipPort, std::move(bus));
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot serve USB/IP on " + Place(address, *config.usbipPort) + ": " +
                             error.code().message());
  }
  const std::lock_guard<std::mutex> lock(stateMutex);
  usbipPort = usbip_->Port();
}

std::vector<std::vector<Delivery>> Simulator::Impl::AnswerSearch(std::size_t network,
                                                                 std::string_view datagram) {
  std::vector<std::vector<Delivery>> answers;
  {
    const std::lock_guard<std::mutex> lock(stateMutex);
    const Ipv4Interface& on = networks_.at(network);
    for (const auto& device : devices) {
      const bool anywhere = device->address == 0;
      const bool isThere =
          anywhere ? !IsLoopback(on.address) : ((device->address ^ on.address) & on.netmask) == 0;
      if (!isThere || !device->plugged) continue;
      const std::string announced = FormatIpv4(anywhere ? on.address : device->address);
      answers.push_back(device->printer.ReceiveSearch(datagram, announced, device->port));
    }
  }
  events.Notify();
  return answers;
}

}  // namespace nuvsim
