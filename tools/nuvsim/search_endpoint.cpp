#include "nuvsim/search_endpoint.h"

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/steady_timer.hpp>
#include <limits>
#include <utility>

#include "nuvsim/ipv4.h"

namespace nuvsim {
namespace {

using asio::ip::udp;

constexpr std::size_t kMaxDatagram = 65536;
constexpr std::uint32_t kAnyAddress = 0;
constexpr std::uint32_t kLimitedBroadcast = 0xffffffffu;
// In place of a network: the one that the sender belongs to, and none that is served.
constexpr std::size_t kSendersNetwork = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kNoNetwork = kSendersNetwork - 1;

}  // namespace

struct SearchEndpoint::Listener {
  Listener(asio::io_context& io, std::size_t servedNetwork)
      : socket(io, udp::v4()), network(servedNetwork) {}

  udp::socket socket;
  std::size_t network;
  udp::endpoint sender;
  std::array<char, kMaxDatagram> buffer{};
};

// The deliveries of one printer on their way to one searcher.
struct SearchEndpoint::Sending {
  Sending(Listener& from, std::vector<Delivery> what)
      : socket(from.socket),
        target(from.sender),
        deliveries(std::move(what)),
        timer(from.socket.get_executor()) {}

  udp::socket& socket;
  udp::endpoint target;
  std::vector<Delivery> deliveries;
  std::size_t next = 0;
  asio::steady_timer timer;
};

SearchEndpoint::SearchEndpoint(asio::io_context& io, std::uint16_t port,
                               std::vector<Ipv4Interface> networks, Answerer answerer)
    : io_(io), port_(port), networks_(std::move(networks)), answerer_(std::move(answerer)) {
  if (!CanBindToBroadcast()) {
    Listen(kAnyAddress, kSendersNetwork);
    return;
  }
  bool reachesOthers = false;
  for (std::size_t i = 0; i < networks_.size(); ++i) {
    Listen(networks_[i].Broadcast(), i);
    reachesOthers = reachesOthers || !IsLoopback(networks_[i].address);
  }
  if (reachesOthers) Listen(kLimitedBroadcast, kSendersNetwork);
}

SearchEndpoint::~SearchEndpoint() = default;

void SearchEndpoint::Listen(std::uint32_t address, std::size_t network) {
  auto listener = std::make_unique<Listener>(io_, network);
  listener->socket.set_option(udp::socket::reuse_address(true));
  listener->socket.bind(udp::endpoint(asio::ip::address_v4(address), port_));
  listeners_.push_back(std::move(listener));
  Receive(*listeners_.back());
}

void SearchEndpoint::Receive(Listener& listener) {
  listener.socket.async_receive_from(
      asio::buffer(listener.buffer), listener.sender,
      [this, &listener](const asio::error_code& error, std::size_t length) {
        if (!listener.socket.is_open()) return;
        if (!error) Answer(listener, length);
        Receive(listener);
      });
}

std::size_t SearchEndpoint::NetworkOf(std::uint32_t sender) const {
  const auto found =
      std::find_if(networks_.begin(), networks_.end(), [sender](const Ipv4Interface& network) {
        return ((sender ^ network.address) & network.netmask) == 0;
      });
  if (found != networks_.end()) return static_cast<std::size_t>(found - networks_.begin());
  // A limited broadcast's sender from elsewhere cannot tell the networks apart either; a socket for
  // all addresses hears searches of networks that have no printer.
  return CanBindToBroadcast() ? 0 : kNoNetwork;
}

void SearchEndpoint::Answer(Listener& listener, std::size_t length) {
  const std::size_t network = listener.network == kSendersNetwork
                                  ? NetworkOf(listener.sender.address().to_v4().to_uint())
                                  : listener.network;
  if (network == kNoNetwork) return;
  const std::string_view datagram(listener.buffer.data(), length);
  for (std::vector<Delivery>& deliveries : answerer_(network, datagram)) {
    Send(std::make_shared<Sending>(listener, std::move(deliveries)));
  }
}

void SearchEndpoint::Send(const std::shared_ptr<Sending>& sending) {
  if (sending->next == sending->deliveries.size()) return;
  const auto delay = sending->deliveries[sending->next].delay;
  if (delay.count() == 0) {
    SendNow(sending);
    return;
  }
  sending->timer.expires_after(delay);
  sending->timer.async_wait([this, sending](const asio::error_code& error) {
    if (!error) SendNow(sending);
  });
}

void SearchEndpoint::SendNow(const std::shared_ptr<Sending>& sending) {
  if (!sending->socket.is_open()) return;
  sending->socket.async_send_to(asio::buffer(sending->deliveries[sending->next].bytes),
                                sending->target,
                                [this, sending](const asio::error_code&, std::size_t) {
                                  // A datagram that cannot be sent is one that got lost.
                                  ++sending->next;
                                  Send(sending);
                                });
}

void SearchEndpoint::Close() {
  asio::error_code ignored;
  for (const auto& listener : listeners_) listener->socket.close(ignored);
}

}  // namespace nuvsim
