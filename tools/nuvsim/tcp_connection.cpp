#include "nuvsim/tcp_connection.h"

#include <asio/buffer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <string_view>
#include <utility>

namespace nuvsim {
namespace {

constexpr std::size_t kReadBytes = std::size_t{256} << 10;
// A client that asks without reading the answers is not read from while this much is unsent.
constexpr std::size_t kMaxQueuedBytes = std::size_t{4} << 20;
// How long a client may take to notice that the printer has ended the connection.
constexpr std::chrono::milliseconds kDiscardTime{1000};

}  // namespace

TcpEndpoint::Connection::Connection(asio::ip::tcp::socket socket, Wire& wire,
                                    std::function<void()> whenGone)
    : socket_(std::move(socket)),
      wire_(wire),
      whenGone_(std::move(whenGone)),
      timer_(socket_.get_executor()),
      buffer_(kReadBytes) {}

void TcpEndpoint::Connection::Start() {
  asio::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  const auto reached = socket_.local_endpoint(ignored).address();
  wire_.ClientCame(reached.is_v4() ? reached.to_v4().to_uint() : 0);
  Read();
}

void TcpEndpoint::Connection::Read() {
  reading_ = true;
  socket_.async_read_some(
      asio::buffer(buffer_),
      [self = shared_from_this()](const asio::error_code& error, std::size_t length) {
        self->reading_ = false;
        if (self->gone_) return;
        if (error) {
          self->Leave();
        } else {
          self->React(self->wire_.Receive(std::string_view(self->buffer_.data(), length)));
        }
      });
}

void TcpEndpoint::Connection::React(Reaction reaction) {
  closing_ = reaction.closing;
  if (!sendFailed_) {
    for (Delivery& each : reaction.deliveries) {
      queuedBytes_ += each.bytes.size();
      queue_.push_back(std::move(each));
    }
  }
  if (!sending_) SendNext();
  if (!gone_ && !reading_ && closing_ == Closing::kNone && queuedBytes_ <= kMaxQueuedBytes) Read();
}

void TcpEndpoint::Connection::SendNext() {
  if (queue_.empty()) {
    if (closing_ != Closing::kNone) EndAsFaulted();
    return;
  }
  sending_ = true;
  if (queue_.front().delay.count() == 0) {
    SendFront();
    return;
  }
  timer_.expires_after(queue_.front().delay);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (!error && !self->gone_) self->SendFront();
  });
}

void TcpEndpoint::Connection::SendFront() {
  asio::async_write(socket_, asio::buffer(queue_.front().bytes),
                    [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                      if (!self->gone_) self->Sent(error);
                    });
}

void TcpEndpoint::Connection::Sent(const asio::error_code& error) {
  sending_ = false;
  if (error) {
    // The client no longer listens, but what it has sent before is still to be read.
    sendFailed_ = true;
    queue_.clear();
    queuedBytes_ = 0;
  } else {
    queuedBytes_ -= queue_.front().bytes.size();
    queue_.pop_front();
    wire_.AnswerSent();
  }
  SendNext();
  if (!gone_ && !reading_ && closing_ == Closing::kNone && queuedBytes_ <= kMaxQueuedBytes) Read();
}

void TcpEndpoint::Connection::EndAsFaulted() {
  asio::error_code ignored;
  if (closing_ == Closing::kReset) {
    socket_.set_option(asio::socket_base::linger(true, 0), ignored);
    Leave();
    return;
  }
  gone_ = true;
  wire_.ClientLeft();
  // Closing with unread bytes would turn the end into a reset, so they are read and forgotten.
  socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
  timer_.expires_after(kDiscardTime);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (!error) self->CloseSocket();
  });
  DiscardUntilClientCloses();
  whenGone_();
}

void TcpEndpoint::Connection::DiscardUntilClientCloses() {
  socket_.async_read_some(asio::buffer(buffer_),
                          [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                            if (error) {
                              self->timer_.cancel();
                              self->CloseSocket();
                            } else {
                              self->DiscardUntilClientCloses();
                            }
                          });
}

void TcpEndpoint::Connection::Leave() {
  gone_ = true;
  timer_.cancel();
  CloseSocket();
  wire_.ClientLeft();
  whenGone_();
}

void TcpEndpoint::Connection::Abort() {
  if (gone_) return;
  gone_ = true;
  timer_.cancel();
  CloseSocket();
  wire_.ClientLeft();
}

void TcpEndpoint::Connection::CloseSocket() {
  asio::error_code ignored;
  socket_.close(ignored);
}

}  // namespace nuvsim
