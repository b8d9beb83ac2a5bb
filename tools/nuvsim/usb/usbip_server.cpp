#include "nuvsim/usb/usbip_server.h"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <cstddef>
#include <deque>
#include <utility>

namespace NuvSim {
namespace {

constexpr size_t kMaxConnections = 64;
// A host that does not take its answers is not read from while this much is unsent.
constexpr size_t kMaxQueuedBytes = size_t{4} << 20;

}  // namespace

// A session on a socket, which both end together.
class UsbipServer::Connection : public UsbipConnection,
                                public std::enable_shared_from_this<Connection> {
 public:
  Connection(asio::ip::tcp::socket socket, const UsbBus& bus)
      : socket_(std::move(socket)), session_(bus, *this) {}

  void Start();
  void Write(std::string message) override;
  void Abort() override;
  void EndOnceWritten() override;

 private:
  void Read();
  void WriteNext();

  asio::ip::tcp::socket socket_;
  UsbipSession session_;
  std::vector<char> buffer_;
  std::deque<std::string> queue_;  // the front one is being sent
  size_t queuedBytes_ = 0;
  bool isHeldBack_ = false;  // until the host has taken enough of the queue
  bool endsOnceWritten_ = false;
};

void UsbipServer::Connection::Start() {
  asio::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  Read();
}

void UsbipServer::Connection::Read() {
  if (!socket_.is_open() || endsOnceWritten_) return;
  isHeldBack_ = queuedBytes_ > kMaxQueuedBytes;
  if (isHeldBack_) return;
  buffer_.resize(session_.Wanted());
  asio::async_read(socket_, asio::buffer(buffer_),
                   [self = shared_from_this()](const asio::error_code& error, size_t) {
                     if (!self->socket_.is_open()) return;
                     if (error) return self->Abort();
                     if (self->endsOnceWritten_) return;
                     self->session_.Take({self->buffer_.data(), self->buffer_.size()});
                     self->Read();
                   });
}

void UsbipServer::Connection::Abort() {
  session_.Detach();
  asio::error_code ignored;
  socket_.close(ignored);
}

void UsbipServer::Connection::EndOnceWritten() {
  endsOnceWritten_ = true;
  if (queue_.empty()) Abort();
}

void UsbipServer::Connection::Write(std::string message) {
  if (!socket_.is_open()) return;
  queuedBytes_ += message.size();
  queue_.push_back(std::move(message));
  if (queue_.size() == 1) WriteNext();
}

void UsbipServer::Connection::WriteNext() {
  asio::async_write(socket_, asio::buffer(queue_.front()),
                    [self = shared_from_this()](const asio::error_code& error, size_t) {
                      if (!self->socket_.is_open()) return;
                      if (error) return self->Abort();
                      self->queuedBytes_ -= self->queue_.front().size();
                      self->queue_.pop_front();
                      if (!self->queue_.empty()) {
                        self->WriteNext();
                      } else if (self->endsOnceWritten_) {
                        self->Abort();
                      }
                      if (self->isHeldBack_) self->Read();
                    });
}

UsbipServer::UsbipServer(asio::io_context& io, uint32_t address, uint16_t port,
                         std::vector<UsbDevice*> devices)
    : listener_(io, [this](asio::ip::tcp::socket socket) { Serve(std::move(socket)); }),
      bus_(std::move(devices)) {
  listener_.Listen(address, port);
}

UsbipServer::~UsbipServer() = default;

void UsbipServer::Serve(asio::ip::tcp::socket socket) {
  connections_.remove_if([](const auto& each) { return each.expired(); });
  if (connections_.size() < kMaxConnections) {
    auto connection = std::make_shared<Connection>(std::move(socket), bus_);
    connections_.push_back(connection);
    connection->Start();
  }
  listener_.Accept();
}

void UsbipServer::Close() {
  listener_.Close();
  for (const auto& each : connections_) {
    if (const auto connection = each.lock()) connection->Abort();
  }
}

}  // namespace NuvSim
