#ifndef NUV_CONNECT_SOCKET_MODE_H_
#define NUV_CONNECT_SOCKET_MODE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "transport/discovery_reply.h"
#include "transport/tcp_client_socket.h"
#include "transport/udp_search_socket.h"

namespace Nuv::Connect {

// The local link's socket mode: its own UDP search, and a plain TCP connection to one of the
// printers that the last search found.
//
// Thread-safety: none; the channel serialises the calls.
class SocketMode {
 public:
  // Searches with `message` on UDP `port`: the network of `address` with `netmask`, or every
  // network of the host when both are empty. `found`: the answers. False: the search could not be
  // made.
  bool SearchDevices(const std::string& message, int port, const std::string& address,
                     const std::string& netmask, int timeoutMs, std::vector<std::string>& found);

  // Connects to printer `index` of the answers that named one, in their order.
  bool Open(int index);
  void Close() { socket_.Close(); }
  bool IsOpen() const { return socket_.IsOpen(); }

  // Sends `length` bytes, after throwing away replies that nobody has read.
  bool Write(const uint8_t* data, size_t length);

  // The next reply line, however many pieces it comes in; what came when no more does.
  std::string ReadReply();

  // The bytes of the last reply; false when there are none.
  bool LastRead(std::vector<uint8_t>& data) const;

 private:
  std::string ReadPiece(int timeoutMs);

  UdpSearchSocket search_;
  TcpClientSocket socket_;
  std::vector<NetworkDevice> devices_;
  std::string lastRead_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_SOCKET_MODE_H_
