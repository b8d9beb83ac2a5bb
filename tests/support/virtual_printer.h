// A printer at the far end of a loopback connection, in virtual time.
#ifndef NUV_TESTS_VIRTUAL_PRINTER_H_
#define NUV_TESTS_VIRTUAL_PRINTER_H_

#include <gtest/gtest.h>

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/virtual_clock.h"
#include "transport/socket_thread.h"

// Answers request lines as it is told, each after a time of the clock. Takes nothing while it is
// stuck.
class VirtualPrinter final : public VirtualPeer {
 public:
  // What comes to a request, after so long; empty: nothing does.
  struct Answer {
    std::string text;
    std::chrono::milliseconds after{0};
  };

  VirtualPrinter() { EXPECT_TRUE(server_.listen(QHostAddress::LocalHost)); }

  uint16_t Port() const { return server_.serverPort(); }

  std::function<Answer(const std::string& request)> answers = [](const auto&) { return Answer{}; };
  bool stuck = false;
  std::vector<std::string> requests;

  std::optional<Nuv::Platform::Deadline> Serve(Nuv::Platform::Deadline now) override {
    server_.waitForNewConnection(0);
    while (server_.hasPendingConnections()) Accept();
    if (socket_ != nullptr && !stuck) Read(now);
    while (!due_.empty() && due_.front().first <= now) {
      const std::string& text = due_.front().second;
      socket_->write(text.data(), static_cast<qint64>(text.size()));
      while (socket_->bytesToWrite() > 0) socket_->waitForBytesWritten(kPatienceMs);
      due_.pop_front();
    }
    if (due_.empty()) return std::nullopt;
    return due_.front().first;
  }

 private:
  // Real time in which what the host has written is here.
  static constexpr int kPatienceMs = 10;

  void Accept() {
    socket_.reset(server_.nextPendingConnection());
    socket_->setParent(nullptr);
    DetachFromThreads(*socket_, *socket_);
    input_.clear();
    due_.clear();
  }
  void Read(Nuv::Platform::Deadline now) {
    while (socket_->state() == QAbstractSocket::ConnectedState &&
           socket_->waitForReadyRead(kPatienceMs)) {
      input_ += socket_->readAll().toStdString();
    }
    for (size_t end = 0; (end = input_.find('\n')) != std::string::npos;) {
      requests.push_back(input_.substr(0, end + 1));
      input_.erase(0, end + 1);
      Answer answer = answers(requests.back());
      if (!answer.text.empty()) due_.emplace_back(now + answer.after, std::move(answer.text));
    }
  }

  QTcpServer server_;
  std::unique_ptr<QTcpSocket> socket_;
  std::string input_;
  std::deque<std::pair<Nuv::Platform::Deadline, std::string>> due_;
};

#endif  // NUV_TESTS_VIRTUAL_PRINTER_H_
