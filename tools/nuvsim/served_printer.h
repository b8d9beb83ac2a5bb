// One printer of a simulator with its endpoints on the network and on the USB.
#ifndef NUVSIM_SERVED_PRINTER_H_
#define NUVSIM_SERVED_PRINTER_H_

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "nuvsim/commands/dialogue.h"
#include "nuvsim/config.h"
#include "nuvsim/net/tcp.h"
#include "nuvsim/printer/jobs.h"
#include "nuvsim/usb/device.h"
#include "nuvsim/wire.h"

namespace NuvSim {

// Lets threads wait for something to happen in the simulator.
// Thread-safety: every function from any thread.
class EventGate {
 public:
  void Notify();

  // Asks `predicate` at once and after every Notify(), unlocked; false after `timeout`.
  bool WaitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds timeout);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  uint64_t events_ = 0;
};

// What the printers of a simulator share.
struct Commons {
  // `wanted` can be used; its clock and calendar are set.
  explicit Commons(SimulatorConfig wanted) : config(std::move(wanted)), folder(config.jobFolder) {}

  template <typename Action>
  auto Locked(const Action& action) {
    const std::lock_guard<std::mutex> lock(stateMutex);
    return action();
  }

  const SimulatorConfig config;
  const JobFolder folder;
  std::mutex stateMutex;  // the I/O thread takes no other
  EventGate events;
  asio::io_context io;  // outlives what runs on it
};

class ServedPrinter {
 public:
  ServedPrinter(Commons& shared, size_t index, const PrinterConfig& config);

  // Listens on the network and is on the USB. Throws std::runtime_error with a message for the user
  // when the port cannot be had.
  void Plug(uint16_t wantedPort);
  void Unplug();
  // Unplugged, but for the clients that it has.
  void AcceptNoMore();
  void FaultsCleared();
  // Wakes the waiters when something happens that only time brings about.
  void ArmStepTimer();

  // One of the two ways to the printer, as its endpoint sees it.
  class Way final : public Wire {
   public:
    Way(ServedPrinter& owner, Channel way) : printer_(owner), channel_(way) {}

    void ClientCame(uint32_t at) override;
    Reaction Receive(std::string_view bytes) override;
    void AnswerSent() override;
    void ClientLeft() override;
    std::optional<std::chrono::milliseconds> TakeRefusal() override;

   private:
    ServedPrinter& printer_;
    Channel channel_;
  };

  Commons& commons;
  Dialogue dialogue;       // guarded by stateMutex
  const uint32_t address;  // 0: all interfaces
  uint16_t port = 0;       // guarded by stateMutex
  bool plugged = false;    // guarded by stateMutex
  Way network;
  Way usb;
  TcpEndpoint endpoint;          // I/O thread only
  UsbDevice usbDevice;           // I/O thread only
  asio::steady_timer stepTimer;  // I/O thread only
};

}  // namespace NuvSim

#endif  // NUVSIM_SERVED_PRINTER_H_
