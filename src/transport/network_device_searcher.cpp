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
#include "transport/search_turn.h"
#include "transport/socket_system.h"
#include "transport/socket_thread.h"

using namespace Nuv::Transport;
using Nuv::Platform::Diagnostic;
using Nuv::Platform::Readiness;

namespace {

// A lab full of printers answers in one burst; the kernel keeps what is not yet read.
constexpr int kReceiveBufferBytes = 1 << 20;
constexpr int kAttempts = 3;   // to ask one address
constexpr int kMomentMs = 20;  // for which one socket is waited for beside another
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

constexpr size_t kLongestDatagram = 65536;

struct Datagram {
  std::string text;
  SearchAddress from;
};

std::optional<Datagram> Receive(QUdpSocket& socket) {
  char text[kLongestDatagram];
  Datagram datagram;
  QHostAddress sender;
  const qint64 size = socket.readDatagram(text, sizeof text, &sender, &datagram.from.second);
  if (size < 0) return std::nullopt;
  datagram.text.assign(text, static_cast<size_t>(size));
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

// Asks addresses one by one, from one socket on a port of the system's choice: each at the
// beginning, after a third and after two thirds of the time (a datagram may get lost), until all
// have answered.
class AddressAsker {
 public:
  AddressAsker(const std::vector<SearchAddress>& addresses, QByteArray message, int timeoutMs,
               const Nuv::Platform::Waiter& waiter)
      : message_(std::move(message)),
        waiter_(waiter),
        timeout_(timeoutMs),
        start_(waiter.GetClock().Now()),
        asked_(addresses.begin(), addresses.end()),
        silent_(asked_),
        bounds_("addresses", timeoutMs, waiter.GetClock()) {
    if (!silent_.empty() && !Bind(socket_, "addresses", 0)) silent_.clear();
  }

  // Whether nobody is left to wait for.
  bool Done() const { return silent_.empty(); }

  // Asks those that have not answered, when it is time, and hands out what comes until they are
  // asked again or `end`. Nothing when nothing came.
  std::optional<std::string> Reply(Nuv::Platform::Deadline end) {
    if (Done()) return std::nullopt;
    if (waited_ || waiter_.GetClock().Now() >= NextAttempt()) {
      if (attempts_ == kAttempts) silent_.clear();
      ++attempts_;
      waited_ = false;
      Ask();
    }
    const Nuv::Platform::Deadline until = std::min(end, NextAttempt());
    while (!Done() && waiter_.Until(until, socket_.socketDescriptor(), Readiness::kInput)) {
      const std::optional<Datagram> datagram = Receive(socket_);
      if (!datagram) continue;
      if (!bounds_.Takes(datagram->text.size())) silent_.clear();
      if (Done() || asked_.count(datagram->from) == 0) continue;
      std::string text = WithAddress(datagram->text, NumberToDotted(datagram->from.first));
      if (text.empty()) continue;
      silent_.erase(datagram->from);
      return text;
    }
    waited_ = until == NextAttempt();
    return std::nullopt;
  }

 private:
  // Behind the last it is the end.
  Nuv::Platform::Deadline NextAttempt() const { return start_ + timeout_ * attempts_ / kAttempts; }

  void Ask() {
    for (const SearchAddress& each : silent_) {
      const QHostAddress target(each.first);
      const auto send = [&] {
        return socket_.writeDatagram(message_, target, each.second) == message_.size();
      };
      // Of many some do not fit at once.
      if (send() || (waiter_.Until(NextAttempt(), socket_.socketDescriptor(), Readiness::kOutput) &&
                     send())) {
        continue;
      }
      Diagnostic("search of %s: not sent: %s", NumberToDotted(each.first).c_str(),
                 qPrintable(socket_.errorString()));
    }
  }

  const QByteArray message_;
  const Nuv::Platform::Waiter& waiter_;
  const std::chrono::milliseconds timeout_;
  const Nuv::Platform::Deadline start_;
  const std::set<SearchAddress> asked_;
  std::set<SearchAddress> silent_;
  SearchBounds bounds_;
  QUdpSocket socket_;
  int attempts_ = 0;
  bool waited_ = true;  // as long as it takes until the next attempt
};

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

// The broadcast address of each network to search; two addresses on one network reach the same
// printers.
std::vector<std::string> NetworkDeviceSearcher::Broadcasts() {
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

SearchAddresses NetworkDeviceSearcher::AddressesOfEnvironment(uint16_t port,
                                                              const ListBroadcasts& broadcasts) {
  const std::string text = Nuv::Platform::Environment(kVariable).value_or("");
  if (text.find_first_not_of(" \t\r\n\v\f") == std::string::npos) return {true, {}, {}};
  SearchAddresses addresses = ParseSearchAddresses(text, port, broadcasts);
  if (!addresses.notUnderstood.empty()) {
    Diagnostic("%s: passed over: %s and %zu more", kVariable,
               addresses.notUnderstood.front().c_str(), addresses.notUnderstood.size() - 1);
  }
  return addresses;
}

std::chrono::milliseconds NetworkDeviceSearcher::Longest(int timeoutMs) {
  return SearchBounds::Longest(timeoutMs) * Broadcasts().size();
}

std::vector<std::string> NetworkDeviceSearcher::Search(uint16_t port, int timeoutMs) {
  const std::vector<std::string> broadcasts = Broadcasts();
  const SearchAddresses addresses = AddressesOfEnvironment(
      port, [&]() -> const auto& { return broadcasts; });
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
  const Nuv::Platform::Deadline end = waiter_.In(timeoutMs);
  AddressAsker asker(addresses, message_, timeoutMs, waiter_);
  while (!asker.Done() && !waiter_.Over()) {
    if (const auto reply = asker.Reply(end)) replies.Add(*reply);
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

void NetworkDeviceSearcher::SearchAtOnce(const SearchAddresses& whom, uint16_t port, int timeoutMs,
                                         const std::function<bool()>& goOn,
                                         const std::function<void(const std::string&)>& found) {
  const Nuv::Platform::Deadline end = waiter_.In(timeoutMs);
  // Another search has most of its answers by then; from there on they come here.
  const Nuv::Platform::Deadline patience = waiter_.In(timeoutMs * 2 / 3);
  const QByteArray echo = message_.toUpper();
  std::optional<SearchTurn> turn;
  if (whom.broadcast) turn.emplace(port);
  QUdpSocket everybody;
  SearchBounds bounds("all networks", timeoutMs, waiter_.GetClock());
  bool listens = false;
  bool broadcast = whom.broadcast;
  Replies replies;
  AddressAsker asker(whom.asked, message_, timeoutMs, waiter_);
  while ((broadcast || !asker.Done()) && waiter_.GetClock().Now() < end && goOn()) {
    if (broadcast && !listens && (turn->Try() || waiter_.GetClock().Now() >= patience)) {
      listens = Bind(everybody, "all networks", port);
      broadcast = listens;
      for (const std::string& network : listens ? Broadcasts() : std::vector<std::string>()) {
        const QHostAddress target(QString::fromStdString(network));
        if (everybody.writeDatagram(message_, target, port) == message_.size()) continue;
        Diagnostic("search on %s: not sent: %s", network.c_str(),
                   qPrintable(everybody.errorString()));
      }
    }
    const auto moment = std::min(end, waiter_.In(kMomentMs));
    std::optional<std::string> reply = asker.Reply(listens ? waiter_.In(0) : moment);
    if (!reply && listens &&
        waiter_.Until(moment, everybody.socketDescriptor(), Readiness::kInput)) {
      const std::optional<Datagram> datagram = Receive(everybody);
      // The host's own broadcast comes back to it.
      if (!datagram || QByteArray::fromStdString(datagram->text).toUpper() == echo) continue;
      broadcast = listens = bounds.Takes(datagram->text.size());
      reply = datagram->text;
    } else if (!reply && !listens && asker.Done()) {
      waiter_.GetClock().SleepFor(std::chrono::milliseconds(kMomentMs));
    }
    if (!reply || replies.Holds(*reply)) continue;
    replies.Add(*reply);
    found(*reply);
  }
}
