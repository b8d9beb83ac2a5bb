#include "transport/network_device_searcher.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QUdpSocket>
#include <algorithm>
#include <optional>
#include <set>
#include <unordered_set>

#include "platform/diagnostics.h"
#include "platform/environment.h"
#include "transport/addresses.h"
#include "transport/discovery_reply.h"
#include "transport/search_bounds.h"
#include "transport/socket_system.h"
#include "transport/socket_thread.h"

using namespace Nuv::Transport;
using Nuv::Platform::Diagnostic;
using Nuv::Platform::Readiness;

namespace {

// A lab full of printers answers in one burst; the kernel keeps what is not yet read.
constexpr int kReceiveBufferBytes = 1 << 20;
constexpr int kAttempts = 3;  // to ask one address
constexpr char kVariable[] = "NUVCONNECT_SEARCH";

std::vector<HostInterface> Interfaces() {
  std::vector<HostInterface> interfaces;
  for (const QNetworkInterface& each : QNetworkInterface::allInterfaces()) {
    const QNetworkInterface::InterfaceFlags flags = each.flags();
    for (const QNetworkAddressEntry& entry : each.addressEntries()) {
      if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol) continue;
      interfaces.push_back({entry.ip().toString().toStdString(),
                            entry.netmask().toString().toStdString(),
                            flags.testFlag(QNetworkInterface::IsRunning),
                            flags.testFlag(QNetworkInterface::IsLoopBack)});
    }
  }
  return interfaces;
}

// The broadcast address of each network to search; two addresses on one network reach the same
// printers.
std::vector<std::string> Broadcasts() {
  std::vector<std::string> broadcasts;
  for (const HostNetwork& network :
       NetworksToSearch(SocketSystem::ResolveIPv4(SocketSystem::LocalHostName()), Interfaces())) {
    std::string broadcast = DirectedBroadcast(network.address, network.netmask);
    if (std::find(broadcasts.begin(), broadcasts.end(), broadcast) == broadcasts.end()) {
      broadcasts.push_back(std::move(broadcast));
    }
  }
  return broadcasts;
}

SearchAddresses AddressesToSearch(uint16_t port, const std::vector<std::string>& broadcasts) {
  const std::string text = Nuv::Platform::Environment(kVariable).value_or("");
  if (text.find_first_not_of(" \t\r\n\v\f") == std::string::npos) return {true, {}, {}};
  SearchAddresses addresses = ParseSearchAddresses(text, port, broadcasts);
  if (!addresses.notUnderstood.empty()) {
    Diagnostic("%s: passed over: %s and %zu more", kVariable,
               addresses.notUnderstood.front().c_str(), addresses.notUnderstood.size() - 1);
  }
  return addresses;
}

// `what` is searched: for the diagnostic. False: the port cannot be bound.
bool Bind(QUdpSocket& socket, const std::string& what, uint16_t port) {
  DetachFromThreads(socket, socket);
  // Of IPv4 only: a socket of both kinds comes after those of other hosts on this machine when an
  // answer is handed out. Windows shares the port only with the hint.
  if (!socket.bind(QHostAddress::AnyIPv4, port,
                   QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
    Diagnostic("search on %s: port %u cannot be bound: %s", what.c_str(), unsigned{port},
               qPrintable(socket.errorString()));
    return false;
  }
  socket.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, kReceiveBufferBytes);
  return true;
}

struct Datagram {
  std::string text;
  SearchAddress from;
};

std::optional<Datagram> Receive(QUdpSocket& socket) {
  Datagram datagram;
  datagram.text.resize(static_cast<size_t>(std::max<qint64>(socket.pendingDatagramSize(), 0)));
  QHostAddress sender;
  const qint64 size =
      socket.readDatagram(datagram.text.data(), static_cast<qint64>(datagram.text.size()), &sender,
                          &datagram.from.second);
  if (size < 0) return std::nullopt;
  datagram.text.resize(static_cast<size_t>(size));
  datagram.from.first = sender.toIPv4Address();
  return datagram;
}

// A printer's reply with the address that it was asked at; empty when it is none.
std::string WithAddress(std::string reply, const std::string& asked) {
  const NetworkDevice device = ParseDiscoveryReply(reply);
  if (!device.valid || device.address == asked) return device.valid ? reply : std::string();
  Diagnostic("search of %s: its printer tells %s, which is not used", asked.c_str(),
             device.address.c_str());
  const std::string key = "IP=<";
  const size_t at = reply.find(key + device.address);
  if (at != std::string::npos) reply.replace(at + key.size(), device.address.size(), asked);
  return reply;
}

}  // namespace

// Distinct reply texts in order of arrival; a thousand replies cost a thousand look-ups.
class NetworkDeviceSearcher::Replies {
 public:
  bool Holds(const std::string& text) const { return seen_.count(text) != 0; }
  void Add(const std::string& text) {
    if (!seen_.insert(text).second) return;
    Diagnostic("search reply: %s", text.c_str());
    inOrder_.push_back(text);
  }
  std::vector<std::string> Take() { return std::move(inOrder_); }

 private:
  std::unordered_set<std::string> seen_;
  std::vector<std::string> inOrder_;
};

NetworkDeviceSearcher::NetworkDeviceSearcher(const std::string& message,
                                             const Nuv::Platform::Waiter& waiter)
    : message_(QByteArray::fromStdString(message)), waiter_(waiter) {}

std::chrono::milliseconds NetworkDeviceSearcher::Longest(int timeoutMs) {
  return SearchBounds::Longest(timeoutMs) * Broadcasts().size();
}

std::vector<std::string> NetworkDeviceSearcher::Search(uint16_t port, int timeoutMs) {
  const std::vector<std::string> broadcasts = Broadcasts();
  const SearchAddresses addresses = AddressesToSearch(port, broadcasts);
  Replies replies;
  AskAddresses(addresses.asked, timeoutMs, replies);
  if (!addresses.broadcast) return replies.Take();
  for (const std::string& broadcast : broadcasts) {
    SearchNetwork(broadcast, port, timeoutMs, replies);
  }
  return replies.Take();
}

void NetworkDeviceSearcher::AskAddresses(const std::vector<SearchAddress>& addresses, int timeoutMs,
                                         Replies& replies) {
  QUdpSocket socket;
  if (!Bind(socket, "addresses", 0)) return;
  const auto handle = socket.socketDescriptor();
  Nuv::Platform::Clock& clock = waiter_.GetClock();
  const std::set<SearchAddress> asked(addresses.begin(), addresses.end());
  std::set<SearchAddress> silent = asked;
  SearchBounds bounds("addresses", timeoutMs, clock);
  const Nuv::Platform::Deadline start = clock.Now();
  for (int attempt = 1; attempt <= kAttempts && !silent.empty() && !waiter_.Over(); ++attempt) {
    const auto end = start + std::chrono::milliseconds(timeoutMs) * attempt / kAttempts;
    for (const SearchAddress& each : silent) {
      const QHostAddress target(each.first);
      const auto send = [&] {
        return socket.writeDatagram(message_, target, each.second) == message_.size();
      };
      // Of many some do not fit at once.
      if (send() || (waiter_.Until(end, handle, Readiness::kOutput) && send())) continue;
      Diagnostic("search of %s: not sent: %s", NumberToDotted(each.first).c_str(),
                 qPrintable(socket.errorString()));
    }
    while (!silent.empty() && waiter_.Until(end, handle, Readiness::kInput)) {
      const std::optional<Datagram> datagram = Receive(socket);
      if (!datagram) continue;
      if (!bounds.Takes(datagram->text.size())) return;
      if (asked.count(datagram->from) == 0) continue;
      const std::string text = WithAddress(datagram->text, NumberToDotted(datagram->from.first));
      if (text.empty()) continue;
      replies.Add(text);
      silent.erase(datagram->from);
    }
  }
}

void NetworkDeviceSearcher::SearchNetwork(const std::string& broadcast, uint16_t port,
                                          int timeoutMs, Replies& replies) {
  QUdpSocket socket;
  if (!Bind(socket, broadcast, port)) return;
  const QHostAddress target(QString::fromStdString(broadcast));
  if (socket.writeDatagram(message_, target, port) != message_.size()) {
    Diagnostic("search on %s: not sent: %s", broadcast.c_str(), qPrintable(socket.errorString()));
    return;
  }

  const QByteArray echo = message_.toUpper();
  SearchBounds bounds(broadcast, timeoutMs, waiter_.GetClock());
  while (const int waitMs = bounds.WaitMs()) {
    if (!waiter_.Until(waiter_.In(waitMs), socket.socketDescriptor(), Readiness::kInput)) return;
    const std::optional<Datagram> datagram = Receive(socket);
    // The host's own broadcast comes back to it.
    if (!datagram || QByteArray::fromStdString(datagram->text).toUpper() == echo) continue;
    if (replies.Holds(datagram->text)) continue;
    if (!bounds.Takes(datagram->text.size())) return;
    replies.Add(datagram->text);
  }
}
