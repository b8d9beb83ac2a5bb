#include "transport/tcp_device_connector.h"

#include <QNetworkProxy>
#include <exception>

#include "platform/diagnostics.h"
#include "transport/host_addresses.h"
#include "transport/socket_thread.h"

using Nuv::Platform::Diagnostic;

namespace {

constexpr int kConnectTimeoutMs = 30000;
constexpr int kWriteTimeoutMs = 30000;
constexpr int kReadSliceMs = 600;
constexpr char kErrorE35[] = "E35";

// Names are resolved here: the socket's own look-up would call back through an event loop.
QHostAddress Resolve(const std::string& host) {
  const std::vector<std::string> addresses = ResolveIPv4(host);
  return addresses.empty() ? QHostAddress()
                           : QHostAddress(QString::fromStdString(addresses.front()));
}

}  // namespace

TcpDeviceConnector::TcpDeviceConnector() : socket_(new QTcpSocket(this)) {
  // A printer stands on the local network; a proxy set for the host program does not lead to it.
  socket_->setProxy(QNetworkProxy::NoProxy);
  DetachFromThreads(*this, *socket_);
}

// The socket goes with its parent: without an event loop deleteLater would never delete it.
TcpDeviceConnector::~TcpDeviceConnector() { Disconnect(); }

bool TcpDeviceConnector::Connect(const std::string& host, uint16_t port) {
  Disconnect();
  const QHostAddress address = Resolve(host);
  if (address.isNull()) {
    Diagnostic("connect: no address for \"%s\"", host.c_str());
    return false;
  }
  socket_->connectToHost(address, port, QIODevice::ReadWrite);
  if (!socket_->waitForConnected(kConnectTimeoutMs)) {
    Diagnostic("connect to %s port %u: %s", host.c_str(), unsigned{port},
               qPrintable(socket_->errorString()));
    socket_->abort();
    return false;
  }
  // Requests are small and each waits for its reply, so Nagle's delay would be added to each.
  socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
  return true;
}

void TcpDeviceConnector::Disconnect() {
  if (IsConnected()) socket_->close();
  // What a stuck printer did not take in time is given up with the connection.
  if (socket_->state() != QAbstractSocket::UnconnectedState) socket_->abort();
}

TcpResult TcpDeviceConnector::Send(const char* data, int64_t length) {
  if (!IsConnected()) return TcpResult::kNotConnected;
  try {
    if (socket_->write(data, length) != length) return TcpResult::kNotSent;
    // One wait ends with the first bytes written; a long line takes several.
    while (socket_->bytesToWrite() > 0) {
      if (!socket_->waitForBytesWritten(kWriteTimeoutMs)) return TcpResult::kNotSent;
    }
  } catch (const std::exception& error) {
    Diagnostic("send: %s", error.what());
    return TcpResult::kNotSent;
  }
  return TcpResult::kOk;
}

TcpResult TcpDeviceConnector::Receive(const std::string& expected, std::string& reply,
                                      int32_t timeoutMs) {
  if (!IsConnected()) return TcpResult::kNotConnected;
  const int slices = timeoutMs / kReadSliceMs;
  // A reply may have come in while the request was still being written.
  bool arrived = slices > 0 && socket_->bytesAvailable() > 0;
  for (int slice = 0; slice < slices && !arrived && IsConnected(); ++slice) {
    arrived = socket_->waitForReadyRead(kReadSliceMs);
  }
  if (!arrived) return TcpResult::kNoReply;

  std::string text(static_cast<size_t>(socket_->bytesAvailable()), '\0');
  socket_->read(text.data(), static_cast<qint64>(text.size()));
  if (text.find(expected) == std::string::npos) {
    return text.find(kErrorE35) != std::string::npos ? TcpResult::kE35 : TcpResult::kUnexpected;
  }
  reply = std::move(text);
  return TcpResult::kOk;
}

void TcpDeviceConnector::DiscardInput() {
  if (!IsConnected()) return;
  do {
    socket_->skip(socket_->bytesAvailable());
  } while (IsConnected() && socket_->waitForReadyRead(0));
}
