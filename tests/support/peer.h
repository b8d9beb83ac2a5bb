#ifndef NUV_TESTS_SUPPORT_PEER_H_
#define NUV_TESTS_SUPPORT_PEER_H_

#include <gtest/gtest.h>

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "transport/socket_thread.h"

// The far end of a TCP connection on the loopback network, which does only what it is told: neither
// reads nor sends by itself. One thread at a time may use it.
class Peer {
 public:
  Peer() { EXPECT_TRUE(server_.listen(QHostAddress::LocalHost)); }

  uint16_t Port() const { return server_.serverPort(); }

  // Takes the connection that was made. False: none was within so long.
  bool Accepts(int patienceMs) {
    if (!server_.waitForNewConnection(patienceMs)) return false;
    socket_.reset(server_.nextPendingConnection());
    socket_->setParent(nullptr);
    socket_->setReadBufferSize(kBufferBytes);
    socket_->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, kBufferBytes);
    DetachFromThreads(*socket_, *socket_);
    return true;
  }
  void Accept() { ASSERT_TRUE(Accepts(kPatienceMs)); }

  void Says(const std::string& bytes) {
    socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
    while (socket_->bytesToWrite() > 0) ASSERT_TRUE(socket_->waitForBytesWritten(kPatienceMs));
  }

  // The next `most` bytes; fewer when the connection ends.
  std::string Reads(size_t most) {
    std::string text;
    while (text.size() < most &&
           (socket_->bytesAvailable() > 0 || socket_->waitForReadyRead(kPatienceMs))) {
      text += socket_->read(static_cast<qint64>(most - text.size())).toStdString();
    }
    return text;
  }

  // All that has come, with pauses of so long.
  std::string ReadsAll(int pauseMs) {
    std::string text;
    while (socket_ != nullptr && socket_->state() == QAbstractSocket::ConnectedState &&
           socket_->waitForReadyRead(pauseMs)) {
      text += socket_->readAll().toStdString();
    }
    return text;
  }

  void Closes() { socket_.reset(); }

 private:
  static constexpr int kPatienceMs = 20000;
  static constexpr int kBufferBytes = 65536;

  QTcpServer server_;
  std::unique_ptr<QTcpSocket> socket_;
};

#endif  // NUV_TESTS_SUPPORT_PEER_H_
