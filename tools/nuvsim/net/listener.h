// Accepts TCP connections for those who serve them.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_NET_LISTENER_H_
#define NUVSIM_NET_LISTENER_H_

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <functional>

namespace NuvSim {

class Listener {
 public:
  // `whenCame` is given each connection. This object must outlive the run of `io`.
  Listener(asio::io_context& io, std::function<void(asio::ip::tcp::socket)> whenCame);

  // Listens on `address` (host byte order; 0: all interfaces) and `port` (0: any free one) and
  // accepts one connection. Throws std::system_error when the address cannot be had.
  void Listen(uint32_t address, uint16_t port);

  // Accepts one further connection; without effect when closed.
  void Accept();

  // Listen() may follow.
  void Close();

  // The port listened on last; 0 before the first Listen().
  uint16_t Port() const { return port_; }

 private:
  asio::io_context& io_;
  std::function<void(asio::ip::tcp::socket)> whenCame_;
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer retryTimer_;
  uint16_t port_ = 0;
  unsigned listening_ = 0;  // counts the times of listening
};

}  // namespace NuvSim

#endif  // NUVSIM_NET_LISTENER_H_
