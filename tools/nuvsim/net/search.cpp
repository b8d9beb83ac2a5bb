#include "nuvsim/net/search.h"

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/steady_timer.hpp>
#include <cctype>
#include <chrono>
#include <limits>
#include <utility>

#include "nuvsim/addresses.h"

namespace NuvSim {
namespace {

using asio::ip::udp;

constexpr size_t kMaxDatagram = 65536;
constexpr uint32_t kAnyAddress = 0;
constexpr uint32_t kLimitedBroadcast = 0xffffffffu;
// In place of a network: the one that the sender belongs to, and none that is served.
constexpr size_t kSendersNetwork = std::numeric_limits<size_t>::max();
constexpr size_t kNoNetwork = kSendersNetwork - 1;

constexpr std::string_view kSearch = "F195";

// No proper answers: too short, refused, cut off, out of order, overlong, no text.
std::vector<std::string> MalformedDatagrams() {
  return {"",
          "F195",
          "F195 NG\r\n",
          "F195 OK IP=<10.",
          "PORT= IP=< OK F195\r\n",
          "F195 NG " + std::string(1400, 'x'),
          std::string("\x80\xff\x00\xfe\r\n", 6)};
}

// What other devices send around on a local network.
std::vector<std::string> ForeignDatagrams() {
  return {"M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n\r\n",
          "NOTIFY * HTTP/1.1\r\nNTS: ssdp:alive\r\n\r\n",
          "{\"type\":\"announce\",\"device\":\"camera\"}"};
}

std::string Reply(const PrinterConfig& printer, const std::string& address,
                  const std::string& port) {
  return "F195 OK IP=<" + address + "> PORT=" + port + " N=<" + printer.name +
         "> M:" + printer.mac + " CN:" + printer.serial + "\r\n";
}

// Distinct answers as of so many printers; all lead to the one that exists.
std::vector<std::string> Burst(const PrinterConfig& printer, const std::string& address,
                               uint16_t port, uint64_t count) {
  std::vector<std::string> replies;
  for (uint64_t i = 1; i <= count; ++i) {
    PrinterConfig other = printer;
    other.name += "-" + std::to_string(i);
    other.serial += "-" + std::to_string(i);
    replies.push_back(Reply(other, address, std::to_string(port)));
  }
  return replies;
}

// What the fault sends ahead of the answer.
std::vector<std::string> Ahead(const Fault& fault, const PrinterConfig& printer,
                               const std::string& address, uint16_t port, std::string_view search) {
  if (fault.kind == FaultKind::kEcho) return {std::string(search)};
  if (fault.kind == FaultKind::kBurst) return Burst(printer, address, port, fault.size);
  const bool isForeign = fault.kind == FaultKind::kForeign;
  if (!isForeign && fault.kind != FaultKind::kMalformed) return {};
  if (!fault.text.empty()) return {fault.text};
  return isForeign ? ForeignDatagrams() : MalformedDatagrams();
}

// The search message, in any letter case, with or without its line end.
bool IsSearch(std::string_view datagram) {
  while (!datagram.empty() && (datagram.back() == '\n' || datagram.back() == '\r')) {
    datagram.remove_suffix(1);
  }
  return std::equal(datagram.begin(), datagram.end(), kSearch.begin(), kSearch.end(),
                    [](unsigned char got, char want) { return std::toupper(got) == want; });
}

}  // namespace

std::vector<Delivery> AnswerSearch(const PrinterConfig& printer, const std::string& address,
                                   uint16_t port, const std::vector<Fault>& faults,
                                   std::string_view search) {
  std::vector<Delivery> deliveries;
  std::string portText = std::to_string(port);
  std::chrono::milliseconds delay{0};
  std::chrono::milliseconds apart{0};  // the copies
  uint64_t copies = 0;
  for (const Fault& fault : faults) {
    if (fault.kind == FaultKind::kSilent) return {};
    if (fault.kind == FaultKind::kLate) delay = fault.delay;
    if (fault.kind == FaultKind::kDuplicate) {
      copies += fault.size;
      apart = fault.delay;
    }
    if (fault.kind == FaultKind::kBadPort) portText = fault.text;
    for (std::string& each : Ahead(fault, printer, address, port, search)) {
      deliveries.push_back({std::move(each), fault.delay});
    }
  }
  const std::string reply = Reply(printer, address, portText);
  deliveries.push_back({reply});
  deliveries.insert(deliveries.end(), copies, {reply, apart});
  deliveries.front().delay += delay;
  return deliveries;
}

struct SearchEndpoint::Listener {
  Listener(asio::io_context& io, size_t servedNetwork)
      : socket(io, udp::v4()), network(servedNetwork) {}

  udp::socket socket;
  size_t network;
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
  size_t next = 0;
  asio::steady_timer timer;
};

SearchEndpoint::SearchEndpoint(asio::io_context& io, uint16_t port,
                               std::vector<Ipv4Interface> networks, Answerer answerer)
    : io_(io), port_(port), networks_(std::move(networks)), answerer_(std::move(answerer)) {
  if (!CanBindToBroadcast()) {
    Listen(kAnyAddress, kSendersNetwork);
    return;
  }
  bool reachesOthers = false;
  for (size_t i = 0; i < networks_.size(); ++i) {
    Listen(networks_[i].Broadcast(), i);
    reachesOthers = reachesOthers || !IsLoopback(networks_[i].address);
  }
  if (reachesOthers) Listen(kLimitedBroadcast, kSendersNetwork);
}

SearchEndpoint::~SearchEndpoint() = default;

void SearchEndpoint::Listen(uint32_t address, size_t network) {
  auto listener = std::make_unique<Listener>(io_, network);
  listener->socket.set_option(udp::socket::reuse_address(true));
  listener->socket.bind(udp::endpoint(asio::ip::address_v4(address), port_));
  listeners_.push_back(std::move(listener));
  Receive(*listeners_.back());
}

void SearchEndpoint::Receive(Listener& listener) {
  listener.socket.async_receive_from(
      asio::buffer(listener.buffer), listener.sender,
      [this, &listener](const asio::error_code& error, size_t length) {
        if (!listener.socket.is_open()) return;
        if (!error) Answer(listener, length);
        Receive(listener);
      });
}

size_t SearchEndpoint::NetworkOf(uint32_t sender) const {
  const auto found =
      std::find_if(networks_.begin(), networks_.end(), [sender](const Ipv4Interface& network) {
        return ((sender ^ network.address) & network.netmask) == 0;
      });
  if (found != networks_.end()) return static_cast<size_t>(found - networks_.begin());
  // A limited broadcast's sender from elsewhere cannot tell the networks apart either; a socket for
  // all addresses hears searches of networks that have no printer.
  return CanBindToBroadcast() ? 0 : kNoNetwork;
}

void SearchEndpoint::Answer(Listener& listener, size_t length) {
  const uint32_t sender = listener.sender.address().to_v4().to_uint();
  const size_t network = listener.network == kSendersNetwork ? NetworkOf(sender) : listener.network;
  const std::string_view datagram(listener.buffer.data(), length);
  if (network == kNoNetwork || !IsSearch(datagram)) return;
  for (std::vector<Delivery>& deliveries : answerer_(network, sender, datagram)) {
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
                                sending->target, [this, sending](const asio::error_code&, size_t) {
                                  // A datagram that cannot be sent is one that got lost.
                                  ++sending->next;
                                  Send(sending);
                                });
}

void SearchEndpoint::Close() {
  asio::error_code ignored;
  for (const auto& listener : listeners_) listener->socket.close(ignored);
}

}  // namespace NuvSim
