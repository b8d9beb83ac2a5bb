#ifndef NUV_CONNECT_SOCKET_MODE_H_
#define NUV_CONNECT_SOCKET_MODE_H_

#include <string>
#include <vector>

#include "connect/local_mode.h"
#include "transport/discovery_reply.h"
#include "transport/tcp_client_socket.h"
#include "transport/udp_search_socket.h"

namespace Nuv::Connect {

// The local link's own UDP search, and a plain TCP connection to one of the printers that the last
// search found.
class SocketMode final : public LocalMode {
 public:
  explicit SocketMode(const TcpLimits& limits = {}) : limits_(limits), socket_(limits) {}

  // Searches with `message` on UDP `port`: the network of `address` with `netmask`, or every
  // network of the host when both are empty. `found`: the answers. False: the search could not be
  // made.
  bool SearchDevices(const std::string& message, int port, const std::string& address,
                     const std::string& netmask, int timeoutMs, std::vector<std::string>& found);

  // Counts the answers that named a printer.
  bool Open(int index) override;
  // The address, since the printers of a later search may come in another order.
  bool Reopen(bool inJob) override;
  void Close() override;
  bool IsOpen() const override { return socket_.IsOpen(); }
  // Throws away what has come, so that an end behind it shows.
  LinkState Look() override;
  bool DiscardUntilQuiet(int quietMs, int limitMs) override;
  // What is not written in time leaves a part of a command on the wire: the connection is closed.
  bool Write(const uint8_t* data, size_t length) override;
  // "address:port".
  std::string Identity(int index) const override;

 private:
  std::string ReadBlock(int timeoutMs, const GivenUp& givenUp) override;
  bool Connect(const NetworkDevice& device);
  // Throws away what has come. True when there was any. A printer that sends without a pause is
  // dropped.
  bool Discard();

  const TcpLimits limits_;
  UdpSearchSocket search_;
  TcpClientSocket socket_;
  std::vector<NetworkDevice> devices_;
  NetworkDevice current_;  // the last that was opened
  bool opened_ = false;    // since the last Close
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_SOCKET_MODE_H_
