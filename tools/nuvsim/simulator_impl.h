// The machinery behind Simulator: the I/O thread, the printers, the search and the USB.
#ifndef NUVSIM_SIMULATOR_IMPL_H_
#define NUVSIM_SIMULATOR_IMPL_H_

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "nuvsim/net/interfaces.h"
#include "nuvsim/net/search.h"
#include "nuvsim/served_printer.h"
#include "nuvsim/simulator.h"
#include "nuvsim/usb/usbip_server.h"
#include "nuvsim/wire.h"

namespace NuvSim {

// Lock order: lifeMutex_ before stateMutex.
class Simulator::Impl {
 public:
  explicit Impl(SimulatorConfig wanted);
  ~Impl();

  void Start();
  void Stop();
  void Unplug(size_t index);
  void Replug(size_t index);
  void ClockChanged();
  void ClearFaults(size_t index);

  // Returns what `look` makes of a printer, with the state locked.
  template <typename Look>
  auto Observe(size_t index, const Look& look) {
    return commons.Locked([&] { return look(*printers.at(index)); });
  }

  // Runs `action` on a printer with the state locked, then wakes the waiters.
  void Change(size_t index, const std::function<void(Dialogue&)>& action);

  Commons commons;
  std::vector<std::unique_ptr<ServedPrinter>> printers;
  uint16_t usbipPort = 0;  // guarded by stateMutex

 private:
  using WorkGuard = asio::executor_work_guard<asio::io_context::executor_type>;

  void Run(const std::function<void()>& action);
  void ListenForSearches();
  void ServeUsb();
  std::vector<std::vector<Delivery>> Answer(size_t network, uint32_t sender,
                                            std::string_view search);
  void CloseAll();

  std::vector<Ipv4Interface> networks_;
  std::vector<uint32_t> own_;  // addresses of this machine
  std::optional<SearchEndpoint> search_;
  std::optional<UsbipServer> usbip_;
  std::optional<WorkGuard> work_;
  std::mutex lifeMutex_;
  std::thread thread_;
  bool started_ = false;
};

}  // namespace NuvSim

#endif  // NUVSIM_SIMULATOR_IMPL_H_
