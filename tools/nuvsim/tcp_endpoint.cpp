#include "nuvsim/tcp_endpoint.h"

#include <asio/ip/address_v4.hpp>
#include <chrono>
#include <utility>

#include "nuvsim/network_interfaces.h"
#include "nuvsim/tcp_connection.h"

namespace nuvsim {
namespace {

using asio::ip::tcp;

// Accepting fails for want of descriptors, which may come back.
constexpr std::chrono::milliseconds kAcceptRetry{100};

}  // namespace

TcpEndpoint::TcpEndpoint(asio::io_context& io, Wire& wire)
    : io_(io), wire_(wire), acceptor_(io), retryTimer_(io) {}

TcpEndpoint::~TcpEndpoint() = default;

void TcpEndpoint::Listen(std::uint32_t address, std::uint16_t port) {
  tcp::acceptor acceptor(io_, tcp::v4());
  if (ListenerReusesAddress()) acceptor.set_option(tcp::acceptor::reuse_address(true));
  acceptor.bind(tcp::endpoint(asio::ip::address_v4(address), port));
  acceptor.listen();
  port_ = acceptor.local_endpoint().port();
  acceptor_ = std::move(acceptor);
  Accept();
}

void TcpEndpoint::Accept() {
  acceptor_.async_accept(
      [this, listening = listening_](const asio::error_code& error, tcp::socket socket) {
        // An acceptance may come from before Close(), even when Listen() has followed.
        if (listening != listening_ || !acceptor_.is_open()) return;
        if (error) {
          retryTimer_.expires_after(kAcceptRetry);
          retryTimer_.async_wait([this, listening](const asio::error_code& stopped) {
            if (!stopped && listening == listening_ && acceptor_.is_open()) Accept();
          });
          return;
        }
        connection_ = std::make_shared<Connection>(std::move(socket), wire_, [this] {
          connection_.reset();
          if (acceptor_.is_open()) Accept();
        });
        connection_->Start();
      });
}

void TcpEndpoint::Close() {
  asio::error_code ignored;
  retryTimer_.cancel();
  acceptor_.close(ignored);
  ++listening_;
  if (connection_) std::exchange(connection_, nullptr)->Abort();
}

}  // namespace nuvsim
