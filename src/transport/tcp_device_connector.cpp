#include "transport/tcp_device_connector.h"

#include <QNetworkProxy>
#include <exception>

#include "platform/diagnostics.h"
#include "transport/socket_thread.h"

using Nuv::Platform::Diagnostic;

namespace {

constexpr int kConnectTimeoutMs = 30000;
constexpr int kWriteTimeoutMs = 30000;
constexpr qint64 kReadChunkBytes = 4096;
// A printer that never stops sending must not hold the caller.
constexpr size_t kMostPendingBytes = size_t{16} << 20;
constexpr char kErrorE35[] = "E35";

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
  const QHostAddress address(QString::fromStdString(host));
  if (address.isNull()) {
    Diagnostic("connect: \"%s\" is no address", host.c_str());
    return false;
  }
  // Unbuffered: a request goes out in the call that writes it and a reply is read in one more,
  // where the socket's own buffers would cost a wait and a query of the length each.
  socket_->connectToHost(address, port, QIODevice::ReadWrite | QIODevice::Unbuffered);
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
    if (socket_->write(data, length) != length) {
      // The system has closed it, which the socket's state would tell only after the next read.
      socket_->abort();
      return TcpResult::kNotSent;
    }
    // The system's buffer takes a request at once; of a long line the rest has to wait.
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
  bool arrived = false;
  for (int slice = 0; slice < slices && !arrived && IsConnected(); ++slice) {
    arrived = socket_->waitForReadyRead(kReadSliceMs);
  }
  std::string text = arrived ? ReadPending() : std::string();
  if (text.empty()) return TcpResult::kNoReply;

  if (text.find(expected) == std::string::npos) {
    return text.find(kErrorE35) != std::string::npos ? TcpResult::kE35 : TcpResult::kUnexpected;
  }
  reply = std::move(text);
  return TcpResult::kOk;
}

std::string TcpDeviceConnector::ReadPending() {
  char chunk[kReadChunkBytes];
  std::string text;
  qint64 count = 0;
  do {
    count = socket_->read(chunk, kReadChunkBytes);
    if (count > 0) text.append(chunk, static_cast<size_t>(count));
  } while (count == kReadChunkBytes && text.size() < kMostPendingBytes);
  return text;
}

void TcpDeviceConnector::DiscardInput() {
  if (IsConnected()) ReadPending();
}
