// Serves simulated USB printers to hosts over USB/IP.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_USBIP_SERVER_H_
#define NUVSIM_USBIP_SERVER_H_

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/usb_descriptors.h"
#include "nuvsim/usb_pipe.h"
#include "nuvsim/usbip_message.h"

namespace nuvsim {

// A printer on the simulator's USB bus. Numbers are counted from 0.
class UsbDevice {
 public:
  UsbDevice(asio::io_context& io, Wire& wire, std::size_t number, UsbId id,
            const std::string& model, const std::string& serial);

  const UsbipDevice& Announced() const { return announced_; }

  // Unplugged, it is on no list, cannot be imported, and the host that had it loses it.
  void Plug() { isPlugged_ = true; }
  void Unplug();
  bool IsPlugged() const { return isPlugged_; }

  // As those of UsbPipe.
  void Attach(UsbHost& host);
  void Detach();

  UsbPipe pipe;
  UsbDescriptors descriptors;

 private:
  UsbipDevice announced_;
  UsbHost* host_ = nullptr;
  bool isPlugged_ = false;
};

class UsbipServer {
 public:
  // Listens at once on `address` (host byte order; 0: all interfaces) and `port` (0: any free
  // one). The devices must outlive this object and the run of `io`. Throws std::system_error when
  // the address cannot be had.
  UsbipServer(asio::io_context& io, std::uint32_t address, std::uint16_t port,
              std::vector<UsbDevice*> devices);
  ~UsbipServer();

  // Stops listening and ends every connection.
  void Close();

  std::uint16_t Port() const { return port_; }

 private:
  class Session;

  void Accept();
  std::string List() const;
  // The plugged device of this bus ID, or null.
  UsbDevice* Find(std::string_view busId) const;

  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer retryTimer_;
  std::vector<UsbDevice*> devices_;
  std::list<std::weak_ptr<Session>> sessions_;
  std::uint16_t port_;
};

}  // namespace nuvsim

#endif  // NUVSIM_USBIP_SERVER_H_
