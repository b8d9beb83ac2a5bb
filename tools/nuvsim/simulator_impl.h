// The machinery behind Simulator: the I/O thread, one device per printer, and the search.
#ifndef NUVSIM_SIMULATOR_IMPL_H_
#define NUVSIM_SIMULATOR_IMPL_H_

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "nuvsim/event_gate.h"
#include "nuvsim/printer.h"
#include "nuvsim/search_endpoint.h"
#include "nuvsim/simulator.h"
#include "nuvsim/tcp_endpoint.h"
#include "nuvsim/usbip_server.h"

namespace nuvsim {

// Lock order: lifeMutex before stateMutex. The I/O thread takes stateMutex only.
class Simulator::Impl {
 public:
  explicit Impl(SimulatorConfig wanted);
  ~Impl();

  void Start();
  void Stop();
  void Unplug(std::size_t index);
  void Replug(std::size_t index);
  void ClockChanged();
  void ClearFaults(std::size_t index);

  // Runs `action` on a printer with the state locked, then wakes the waiters.
  void Change(std::size_t index, const std::function<void(Printer&)>& action);

  class Device;

  // One of the two ways to a printer, as the wire sees it.
  class Way : public Wire {
   public:
    Way(Device& owner, Channel way) : device(owner), channel(way) {}

    void ClientCame(std::uint32_t at) override;
    Reaction Receive(std::string_view bytes) override;
    void AnswerSent() override;
    void ClientLeft() override;
    std::optional<std::chrono::milliseconds> TakeRefusal() override;

   private:
    Device& device;
    Channel channel;
  };

  // One printer with its endpoints.
  class Device {
   public:
    Device(Impl& owner, std::size_t index, PrinterConfig config);

    void Listen(std::uint16_t wantedPort);
    void Unplug();
    // Wakes the waiters when something happens that only time brings about.
    void ArmStepTimer();

    Impl& owner;
    Printer printer;         // guarded by stateMutex
    std::uint32_t address;   // 0: all interfaces
    std::uint16_t port = 0;  // guarded by stateMutex
    bool plugged = false;    // guarded by stateMutex
    Way network;
    Way usb;
    TcpEndpoint endpoint;          // I/O thread only
    UsbDevice usbDevice;           // I/O thread only
    asio::steady_timer stepTimer;  // I/O thread only
  };

  SimulatorConfig config;
  JobFolder folder;
  mutable std::mutex stateMutex;
  EventGate events;
  asio::io_context io;  // outlives what runs on it
  std::vector<std::unique_ptr<Device>> devices;
  std::uint16_t usbipPort = 0;  // guarded by stateMutex

 private:
  using WorkGuard = asio::executor_work_guard<asio::io_context::executor_type>;

  void Run(const std::function<void()>& action);
  void ListenForSearches();
  void ServeUsb();
  std::vector<std::vector<Delivery>> AnswerSearch(std::size_t network, std::string_view datagram);
  void CloseAll();

  std::vector<Ipv4Interface> networks_;
  std::optional<SearchEndpoint> search_;
  std::optional<UsbipServer> usbip_;
  std::optional<WorkGuard> work_;
  std::mutex lifeMutex_;
  std::thread thread_;
  bool started_ = false;
};

}  // namespace nuvsim

#endif  // NUVSIM_SIMULATOR_IMPL_H_
