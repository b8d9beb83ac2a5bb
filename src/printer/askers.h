#ifndef NUV_PRINTER_ASKERS_H_
#define NUV_PRINTER_ASKERS_H_

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "connect/nuv_connect.h"
#include "printer/call_limits.h"
#include "printer/identity.h"

namespace Nuv::Printer {

using UsbMaker = std::function<std::unique_ptr<ConnectorBase>()>;

// Asks printers who they are, each over a connection of its own, many at once, until a deadline.
// How that went stands in the identity: who stays silent or refuses is a printer, too.
//
// Thread-safety: none; its own threads are its own business.
class Askers {
 public:
  static constexpr size_t kMost = 32;  // at once

  // `clock` outlives it. `makeUsb`: the connector to printers on USB.
  Askers(Platform::Deadline end, Platform::Clock& clock, UsbMaker makeUsb)
      : limits_(end, clock), clock_(clock), makeUsb_(std::move(makeUsb)) {}
  // Gives up those that are being asked, which takes a moment.
  ~Askers();
  Askers(const Askers&) = delete;
  Askers& operator=(const Askers&) = delete;

  // `device`: of a printer on the network.
  void Ask(const nuv_identity& printer,
           const std::optional<Transport::NetworkDevice>& device = std::nullopt);

  // Those that have been asked since the last call, after at most so long.
  std::vector<nuv_identity> Take(std::chrono::milliseconds patience);

  // Whether there is somebody of whom Take has not told.
  bool Busy() const;

  // Gives up those that have not answered, which become silent ones for Take to tell of.
  void GiveUp();

 private:
  struct Question {
    nuv_identity printer;
    std::optional<Transport::NetworkDevice> device;
  };

  void Work();
  void Answer(Question& question);

  CallLimits limits_;
  Platform::Clock& clock_;
  const UsbMaker makeUsb_;
  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable answered_;
  std::deque<Question> waiting_;
  std::vector<nuv_identity> asked_;
  size_t underWay_ = 0;
  size_t working_ = 0;  // threads
  std::vector<std::thread> threads_;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_ASKERS_H_
