#include "nuvsim/net/listener.h"

#include <asio/error.hpp>
#include <asio/ip/address_v4.hpp>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "nuvsim/net/interfaces.h"

namespace NuvSim {
namespace {

using asio::ip::tcp;

// Accepting fails for want of descriptors, which may come back.
constexpr std::chrono::milliseconds kAcceptRetry{100};

// A listener closed while it was accepting may hold its port until the system has ended the
// acceptance.
constexpr std::chrono::milliseconds kBindRetry{5};
constexpr int kBindTries = 200;

}  // namespace

Listener::Listener(asio::io_context& io, std::function<void(tcp::socket)> whenCame)
    : io_(io), whenCame_(std::move(whenCame)), acceptor_(io), retryTimer_(io) {}

void Listener::Listen(uint32_t address, uint16_t port) {
  tcp::acceptor acceptor(io_, tcp::v4());
  if (ListenerReusesAddress()) acceptor.set_option(tcp::acceptor::reuse_address(true));
  const tcp::endpoint local(asio::ip::address_v4(address), port);
  asio::error_code error;
  acceptor.bind(local, error);
  const bool hadPort = port != 0 && port == port_;
  for (int tries = 1; hadPort && error == asio::error::address_in_use && tries < kBindTries;
       ++tries) {
    std::this_thread::sleep_for(kBindRetry);
    acceptor.bind(local, error);
  }
  if (error) throw std::system_error(error, "bind");
  acceptor.listen();
  port_ = acceptor.local_endpoint().port();
  acceptor_ = std::move(acceptor);
  Accept();
}

void Listener::Accept() {
  if (!acceptor_.is_open()) return;
  acceptor_.async_accept(
      [this, listening = listening_](const asio::error_code& error, tcp::socket socket) {
        // An acceptance may come from before Close(), even when Listen() has followed.
        if (listening != listening_) return;
        if (!error) return whenCame_(std::move(socket));
        retryTimer_.expires_after(kAcceptRetry);
        retryTimer_.async_wait([this, listening](const asio::error_code& stopped) {
          if (!stopped && listening == listening_) Accept();
        });
      });
}

void Listener::Close() {
  asio::error_code ignored;
  retryTimer_.cancel();
  acceptor_.close(ignored);
  ++listening_;
}

}  // namespace NuvSim
