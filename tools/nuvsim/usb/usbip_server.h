// Serves simulated USB printers to hosts over USB/IP.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_USB_USBIP_SERVER_H_
#define NUVSIM_USB_USBIP_SERVER_H_

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "nuvsim/net/listener.h"
#include "nuvsim/usb/device.h"
#include "nuvsim/usb/usbip_session.h"

namespace NuvSim {

class UsbipServer {
 public:
  // Listens at once on `address` (host byte order; 0: all interfaces) and `port` (0: any free
  // one). The devices must outlive this object and the run of `io`. Throws std::system_error when
  // the address cannot be had.
  UsbipServer(asio::io_context& io, uint32_t address, uint16_t port,
              std::vector<UsbDevice*> devices);
  ~UsbipServer();

  // Stops listening and ends every connection.
  void Close();

  uint16_t Port() const { return listener_.Port(); }

 private:
  class Connection;

  void Serve(asio::ip::tcp::socket socket);

  Listener listener_;
  const UsbBus bus_;
  std::list<std::weak_ptr<Connection>> connections_;
};

}  // namespace NuvSim

#endif  // NUVSIM_USB_USBIP_SERVER_H_
