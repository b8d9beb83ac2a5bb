// The TCP side of one printer: serves one client at a time and carries bytes, no more.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_NET_TCP_H_
#define NUVSIM_NET_TCP_H_

#include <asio/io_context.hpp>
#include <cstdint>
#include <memory>

#include "nuvsim/net/listener.h"
#include "nuvsim/wire.h"

namespace NuvSim {

class TcpEndpoint {
 public:
  // `wire` must outlive this object and the run of `io`.
  TcpEndpoint(asio::io_context& io, Wire& wire);
  ~TcpEndpoint();

  // Listens on `address` (host byte order; 0: all interfaces) and `port` (0: any free one) and
  // serves clients from then on. Throws std::system_error when the address cannot be had.
  void Listen(uint32_t address, uint16_t port) { listener_.Listen(address, port); }

  // Stops listening and ends the connection being served. Listen() may follow.
  void Close();

  // Accepts no further client. Listen() may follow.
  void StopListening() { listener_.Close(); }

  // A stall of the client being served may be over.
  void FaultsCleared();

  // The port listened on last; 0 before the first Listen().
  uint16_t Port() const { return listener_.Port(); }

 private:
  class Connection;

  Wire& wire_;
  Listener listener_;
  std::shared_ptr<Connection> connection_;  // being served
};

}  // namespace NuvSim

#endif  // NUVSIM_NET_TCP_H_
