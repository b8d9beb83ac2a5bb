#include "transport/tcp_device_connector.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <algorithm>

#include "platform/diagnostics.h"
#include "transport/socket_system.h"
#include "transport/socket_thread.h"

using namespace Nuv::Transport;
using Nuv::Platform::Diagnostic;

namespace {

constexpr qint64 kReadChunkBytes = 4096;
// A printer that erases its memory takes nothing for longer than one write waits.
constexpr int kMostStalls = 2;
constexpr char kErrorE35[] = "E35";

}  // namespace

TcpDeviceConnector::TcpDeviceConnector(const TcpLimits& limits, const Nuv::Platform::Waiter& waiter)
    : limits_(limits), waiter_(waiter) {
  moveToThread(nullptr);
  MakeSocket();
}

TcpDeviceConnector::~TcpDeviceConnector() = default;

void TcpDeviceConnector::MakeSocket() {
  socket_ = std::make_unique<QTcpSocket>();
  // A printer stands on the local network; a proxy set for the host program does not lead to it.
  socket_->setProxy(QNetworkProxy::NoProxy);
  DetachFromThreads(*socket_, *socket_);
}

bool TcpDeviceConnector::Connect(const std::string& host, uint16_t port) {
  Disconnect();
  const QHostAddress address(QString::fromStdString(host));
  if (address.isNull()) {
    Diagnostic("connect: \"%s\" is no address", host.c_str());
    return false;
  }
  if (MakeConnection(address, port)) {
    // Requests are small and each waits for its reply, so Nagle's delay would be added to each.
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    opened_ = true;
    return true;
  }
  Diagnostic("connect to %s port %u: %s", host.c_str(), unsigned{port},
             socket_->state() == QAbstractSocket::ConnectingState
                 ? "no answer"
                 : qPrintable(socket_->errorString()));
  // On Windows one whose connection was refused keeps its descriptor, which can be bound only once.
  MakeSocket();
  return false;
}

bool TcpDeviceConnector::MakeConnection(const QHostAddress& address, uint16_t port) {
  // Once the connection stands, Qt has but to see it.
  constexpr int kSeenMs = 1000;
  // Only a socket that is bound has a descriptor to wait on while it connects.
  const bool isIPv6 = address.protocol() == QAbstractSocket::IPv6Protocol;
  if (!socket_->bind(isIPv6 ? QHostAddress::AnyIPv6 : QHostAddress::AnyIPv4, 0,
                     QAbstractSocket::DontShareAddress)) {
    return false;
  }
  // Unbuffered: a request goes out in the call that writes it and a reply is read in one more,
  // where the socket's own buffers would cost a wait and a query of the length each.
  socket_->connectToHost(address, port, QIODevice::ReadWrite | QIODevice::Unbuffered);
  return IsConnected() || (socket_->state() == QAbstractSocket::ConnectingState &&
                           waiter_.Until(waiter_.In(limits_.connectMs), socket_->socketDescriptor(),
                                         Nuv::Platform::Readiness::kOutput) &&
                           socket_->waitForConnected(kSeenMs));
}

void TcpDeviceConnector::Disconnect() {
  // What a stuck printer did not take in time is given up with the connection.
  socket_->abort();
  opened_ = false;
  stalls_ = 0;
}

TcpResult TcpDeviceConnector::Send(const char* data, int64_t length, bool patient) {
  if (!IsConnected()) return TcpResult::kNotConnected;
  const int64_t all = socket_->bytesToWrite() + length;
  if (socket_->write(data, length) != length) {
    // The system has closed it, which the socket's state would tell only after the next read.
    socket_->abort();
    return TcpResult::kNotSent;
  }
  // The system's buffer takes a request at once; of a long line the rest has to wait.
  int64_t left = socket_->bytesToWrite();
  const auto takeMore = [this]() -> int64_t {
    socket_->flush();
    return IsConnected() ? socket_->bytesToWrite() : -1;
  };
  const WriteEnd end =
      left == 0 ? WriteEnd::kTaken
                : FinishWrite(socket_->socketDescriptor(), left, limits_, waiter_, takeMore);
  if (left < all) stalls_ = 0;
  if (end == WriteEnd::kTaken) return TcpResult::kOk;
  ++stalls_;
  Diagnostic("send: %lld of %lld bytes not taken", static_cast<long long>(left),
             static_cast<long long>(all));
  if (end == WriteEnd::kLost) {
    socket_->abort();
  } else if (!patient || stalls_ >= kMostStalls) {
    Disconnect();
  }
  return TcpResult::kNotSent;
}

TcpResult TcpDeviceConnector::Receive(const std::string& expected, std::string& reply,
                                      int timeoutMs) {
  constexpr int kSliceMs = 600;
  if (!IsConnected()) return TcpResult::kNotConnected;
  const int slices = timeoutMs / kSliceMs;
  if (slices <= 0) return TcpResult::kNoReply;
  const Nuv::Platform::Deadline deadline = waiter_.In(slices * int64_t{kSliceMs});
  std::string text;
  do {
    // What is ready may be an end.
    if (!IsConnected() || !HasInput(deadline)) return TcpResult::kNoReply;
  } while (!Take(text, limits_.replyBytes, Until::kShortRead));
  if (text.find(expected) == std::string::npos) {
    return text.find(kErrorE35) != std::string::npos ? TcpResult::kE35 : TcpResult::kUnexpected;
  }
  reply = std::move(text);
  return TcpResult::kOk;
}

bool TcpDeviceConnector::Take(std::string& text, size_t most, Until until) {
  const qint64 goesOn = until == Until::kShortRead ? kReadChunkBytes : 1;
  char chunk[kReadChunkBytes];
  DiscardLimit limit(limits_, waiter_.GetClock());
  bool any = false;
  qint64 count = 0;
  do {
    count = socket_->read(chunk, kReadChunkBytes);
    if (count <= 0) break;
    any = true;
    const size_t kept = std::min(static_cast<size_t>(count), most - text.size());
    text.append(chunk, kept);
    const size_t thrown = static_cast<size_t>(count) - kept;
    if (thrown > 0 && !limit.Allows(thrown)) socket_->abort();
  } while (count >= goesOn && IsConnected());
  if (most > 0 && limit.Thrown() > 0) {
    Diagnostic("reply longer than %zu bytes: %zu thrown away", most, limit.Thrown());
  }
  return any;
}

bool TcpDeviceConnector::Discard(int quietMs, int limitMs) {
  std::string nothing;
  const Nuv::Platform::Deadline end = waiter_.In(limitMs);
  bool any = false;
  do {
    any = (IsConnected() && Take(nothing, 0, Until::kNothing)) || any;
  } while (quietMs > 0 && IsConnected() && waiter_.GetClock().Now() < end &&
           HasInput(std::min(end, waiter_.In(quietMs))));
  return any;
}

bool TcpDeviceConnector::HasInput(Nuv::Platform::Deadline deadline) const {
  return waiter_.Until(deadline, socket_->socketDescriptor(), Nuv::Platform::Readiness::kInput);
}

bool TcpDeviceConnector::IsConnected() const {
  return socket_->state() == QAbstractSocket::ConnectedState;
}

void TcpDeviceConnector::LimitSilence(std::chrono::milliseconds limit) {
  if (IsConnected()) SocketSystem::LimitSilence(socket_->socketDescriptor(), limit);
}

LinkState TcpDeviceConnector::Look() {
  Discard();
  if (IsConnected()) return LinkState::kAlive;
  return opened_ ? LinkState::kEnded : LinkState::kClosed;
}
