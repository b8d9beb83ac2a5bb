// The TCP side of one printer: serves one client at a time and carries bytes, no more.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_TCP_ENDPOINT_H_
#define NUVSIM_TCP_ENDPOINT_H_

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <memory>

#include "nuvsim/wire.h"

namespace nuvsim {

class TcpEndpoint {
 public:
  // `wire` must outlive this object and the run of `io`.
  TcpEndpoint(asio::io_context& io, Wire& wire);
  ~TcpEndpoint();

  // Listens on `address` (host byte order; 0: all interfaces) and `port` (0: any free one) and
  // serves clients from then on. Throws std::system_error when the address cannot be had.
  void Listen(std::uint32_t address, std::uint16_t port);

  // Stops listening and ends the connection being served. Listen() may follow.
  void Close();

  // A stall of the client being served may be over.
  void FaultsCleared();

  // The port listened on last; 0 before the first Listen().
  std::uint16_t Port() const { return port_; }

 private:
  class Connection;

  void Accept();

  asio::io_context& io_;
  Wire& wire_;
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer retryTimer_;
  std::shared_ptr<Connection> connection_;  // being served
  std::uint16_t port_ = 0;
  unsigned listening_ = 0;  // counts the times of listening
};

}  // namespace nuvsim

#endif  // NUVSIM_TCP_ENDPOINT_H_
