#include "transport/network_device_searcher.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QUdpSocket>
#include <algorithm>
#include <unordered_set>

#include "platform/diagnostics.h"
#include "transport/addresses.h"
#include "transport/search_bounds.h"
#include "transport/socket_system.h"
#include "transport/socket_thread.h"

using namespace Nuv::Transport;
using Nuv::Platform::Diagnostic;

namespace {

// A lab full of printers answers in one burst; the kernel keeps what is not yet read.
constexpr int kReceiveBufferBytes = 1 << 20;

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

}  // namespace

// Distinct reply texts in order of arrival; a thousand replies cost a thousand look-ups.
class NetworkDeviceSearcher::Replies {
 public:
  // False: it is one too many for `bounds`.
  bool Add(const std::string& text, SearchBounds& bounds) {
    if (seen_.count(text) != 0) return true;
    if (!bounds.Takes(text.size())) return false;
    Diagnostic("search reply: %s", text.c_str());
    seen_.insert(text);
    inOrder_.push_back(text);
    return true;
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
  Replies replies;
  for (const std::string& broadcast : Broadcasts()) {
    SearchNetwork(broadcast, port, timeoutMs, replies);
  }
  return replies.Take();
}

void NetworkDeviceSearcher::SearchNetwork(const std::string& broadcast, uint16_t port,
                                          int timeoutMs, Replies& replies) {
  QUdpSocket socket;
  DetachFromThreads(socket, socket);
  // Of IPv4 only: a socket of both kinds comes after those of other hosts on this machine when an
  // answer is handed out. Windows shares the port only with the hint.
  if (!socket.bind(QHostAddress::AnyIPv4, port,
                   QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
    Diagnostic("search on %s: port %u cannot be bound: %s", broadcast.c_str(), unsigned{port},
               qPrintable(socket.errorString()));
    return;
  }
  socket.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, kReceiveBufferBytes);
  const QHostAddress target(QString::fromStdString(broadcast));
  if (socket.writeDatagram(message_, target, port) != message_.size()) {
    Diagnostic("search on %s: not sent: %s", broadcast.c_str(), qPrintable(socket.errorString()));
    return;
  }

  const QByteArray echo = message_.toUpper();
  SearchBounds bounds(broadcast, timeoutMs, waiter_.GetClock());
  while (const int waitMs = bounds.WaitMs()) {
    if (!waiter_.Until(waiter_.In(waitMs), socket.socketDescriptor(),
                       Nuv::Platform::Readiness::kInput)) {
      return;
    }
    QByteArray text(static_cast<int>(socket.pendingDatagramSize()), '\0');
    const qint64 size = socket.readDatagram(text.data(), text.size());
    if (size < 0) continue;
    text.truncate(static_cast<int>(size));
    // The host's own broadcast comes back to it.
    if (text.toUpper() != echo && !replies.Add(text.toStdString(), bounds)) return;
  }
}
