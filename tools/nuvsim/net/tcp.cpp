#include "nuvsim/net/tcp.h"

#include <asio/buffer.hpp>
#include <asio/error_code.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace NuvSim {
namespace {

constexpr size_t kReadBytes = size_t{256} << 10;
// A client that asks without reading the answers is not read from while this much is unsent.
constexpr size_t kMaxQueuedBytes = size_t{4} << 20;
// How long a client may take to notice that the printer has ended the connection.
constexpr std::chrono::milliseconds kDiscardTime{1000};

}  // namespace

// One client of a printer, from its acceptance to its end.
class TcpEndpoint::Connection : public std::enable_shared_from_this<Connection> {
 public:
  // `whenGone` is called once, when the printer is free for the next client.
  Connection(asio::ip::tcp::socket socket, Wire& wire, std::function<void()> whenGone);

  void Start();
  // Ends the connection without calling `whenGone`.
  void Abort();
  void EndStall();

 private:
  void ReadOn();
  void Read();
  void Take();
  void Stall(std::chrono::milliseconds time);
  void SendNext();
  void SendFront();
  void Sent(const asio::error_code& error);
  void EndAsFaulted();
  void DiscardUntilClientCloses();
  void Leave();
  void CloseSocket();

  asio::ip::tcp::socket socket_;
  Wire& wire_;
  std::function<void()> whenGone_;
  asio::steady_timer timer_;  // delays of deliveries, later the limit of discarding
  std::vector<char> buffer_;
  std::string_view untaken_;    // of the buffer, during a stall
  std::deque<Delivery> queue_;  // the front one is being sent
  size_t queuedBytes_ = 0;
  Closing closing_ = Closing::kNone;  // once the queue is empty
  bool reading_ = false;
  bool stalled_ = false;
  asio::steady_timer stallTimer_;
  bool sending_ = false;
  bool sendFailed_ = false;
  bool gone_ = false;
};

TcpEndpoint::Connection::Connection(asio::ip::tcp::socket socket, Wire& wire,
                                    std::function<void()> whenGone)
    : socket_(std::move(socket)),
      wire_(wire),
      whenGone_(std::move(whenGone)),
      timer_(socket_.get_executor()),
      buffer_(kReadBytes),
      stallTimer_(socket_.get_executor()) {}

void TcpEndpoint::Connection::Start() {
  asio::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  const auto reached = socket_.local_endpoint(ignored).address();
  wire_.ClientCame(reached.is_v4() ? reached.to_v4().to_uint() : 0);
  Read();
}

// Goes on with what has been read, then with reading, unless something keeps it from that.
void TcpEndpoint::Connection::ReadOn() {
  if (gone_ || reading_ || stalled_) return;
  if (closing_ != Closing::kNone || queuedBytes_ > kMaxQueuedBytes) return;
  if (untaken_.empty()) {
    Read();
  } else {
    Take();
  }
}

void TcpEndpoint::Connection::Read() {
  reading_ = true;
  socket_.async_read_some(asio::buffer(buffer_), [self = shared_from_this()](
                                                     const asio::error_code& error, size_t length) {
    self->reading_ = false;
    if (self->gone_) return;
    if (error) {
      self->Leave();
    } else {
      self->untaken_ = std::string_view(self->buffer_.data(), length);
      self->Take();
    }
  });
}

void TcpEndpoint::Connection::Take() {
  Reaction reaction = wire_.Receive(untaken_);
  untaken_.remove_prefix(reaction.taken);
  closing_ = reaction.closing;
  if (reaction.stall) Stall(*reaction.stall);
  if (!sendFailed_) {
    for (Delivery& each : reaction.deliveries) {
      queuedBytes_ += each.bytes.size();
      queue_.push_back(std::move(each));
    }
  }
  if (!sending_) SendNext();
  ReadOn();
}

void TcpEndpoint::Connection::Stall(std::chrono::milliseconds time) {
  stalled_ = true;
  if (time.count() == 0) return;
  stallTimer_.expires_after(time);
  stallTimer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    // One that had run out before it was cancelled calls without an error.
    const auto now = asio::steady_timer::clock_type::now();
    if (!error && self->stallTimer_.expiry() <= now) self->EndStall();
  });
}

void TcpEndpoint::Connection::EndStall() {
  stalled_ = false;
  stallTimer_.cancel();
  ReadOn();
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
                    [self = shared_from_this()](const asio::error_code& error, size_t) {
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
    if (!queue_.front().repeats) {
      queuedBytes_ -= queue_.front().bytes.size();
      queue_.pop_front();
    }
    wire_.AnswerSent();
  }
  SendNext();
  ReadOn();
}

void TcpEndpoint::Connection::EndAsFaulted() {
  asio::error_code ignored;
  if (closing_ == Closing::kReset) {
    socket_.set_option(asio::socket_base::linger(true, 0), ignored);
    Leave();
    return;
  }
  gone_ = true;
  // Closing with unread bytes would turn the end into a reset, so they are read and forgotten.
  socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
  wire_.ClientLeft();
  timer_.expires_after(kDiscardTime);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (!error) self->CloseSocket();
  });
  DiscardUntilClientCloses();
  whenGone_();
}

void TcpEndpoint::Connection::DiscardUntilClientCloses() {
  socket_.async_read_some(asio::buffer(buffer_),
                          [self = shared_from_this()](const asio::error_code& error, size_t) {
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
  stallTimer_.cancel();
  socket_.close(ignored);
}

TcpEndpoint::TcpEndpoint(asio::io_context& io, Wire& wire)
    : wire_(wire), listener_(io, [this](asio::ip::tcp::socket socket) {
        connection_ = std::make_shared<Connection>(std::move(socket), wire_, [this] {
          connection_.reset();
          listener_.Accept();
        });
        connection_->Start();
      }) {}

TcpEndpoint::~TcpEndpoint() = default;

void TcpEndpoint::FaultsCleared() {
  const std::shared_ptr<Connection> served = connection_;  // it may end meanwhile
  if (served) served->EndStall();
}

void TcpEndpoint::Close() {
  listener_.Close();
  if (connection_) std::exchange(connection_, nullptr)->Abort();
}

}  // namespace NuvSim
