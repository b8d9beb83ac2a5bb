#include "nuvsim/usbip_session.h"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <utility>

namespace nuvsim {
namespace {

// Far more than a driver sends; a host that goes beyond is not one.
constexpr std::size_t kMaxTransferBytes = std::size_t{1} << 20;
constexpr std::size_t kMaxPending = 256;
// A host that does not take its answers is not read from while this much is unsent.
constexpr std::size_t kMaxQueuedBytes = std::size_t{4} << 20;

// What the header of a transfer that is not isochronous holds as the number of packets.
constexpr std::uint32_t kNotIsochronous = 0xffffffffu;

}  // namespace

UsbipServer::Session::Session(asio::ip::tcp::socket socket, const UsbipServer& server)
    : socket_(std::move(socket)), server_(server) {}

void UsbipServer::Session::Start() {
  asio::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  ReadOperation();
}

void UsbipServer::Session::ReadThen(std::size_t length, Step next) {
  buffer_.resize(length);
  asio::async_read(socket_, asio::buffer(buffer_),
                   [self = shared_from_this(), next](const asio::error_code& error, std::size_t) {
                     if (!self->socket_.is_open()) return;
                     if (error) {
                       self->Abort();
                     } else if (!self->endsOnceWritten_) {
                       (self.get()->*next)();
                     }
                   });
}

void UsbipServer::Session::ReadOperation() {
  if (queuedBytes_ > kMaxQueuedBytes) {
    waiting_ = &Session::ReadOperation;
    return;
  }
  ReadThen(kOperationBytes, &Session::OnOperation);
}

void UsbipServer::Session::OnOperation() {
  const OperationHeader header = ReadOperationHeader(Received());
  if (header.version == kUsbipVersion && header.code == kRequestList) {
    Write(server_.List());
    ReadOperation();
  } else if (header.version == kUsbipVersion && header.code == kRequestImport) {
    ReadThen(kBusIdBytes, &Session::OnImport);
  } else {
    Abort();
  }
}

void UsbipServer::Session::OnImport() {
  const std::string_view padded = Received();
  UsbDevice* const device = server_.Find(padded.substr(0, padded.find('\0')));
  if (device == nullptr || device->pipe.IsAttached()) {
    Write(ImportRefusal(device == nullptr ? ImportStatus::kNoDevice : ImportStatus::kBusy));
    Ended();
    return;
  }
  device_ = device;
  device_->Attach(*this);
  Write(ImportReply(device_->Announced()));
  ReadTransfer();
}

void UsbipServer::Session::ReadTransfer() {
  if (queuedBytes_ > kMaxQueuedBytes) {
    waiting_ = &Session::ReadTransfer;
    return;
  }
  if (socket_.is_open()) ReadThen(kTransferBytes, &Session::OnTransfer);
}

void UsbipServer::Session::OnTransfer() {
  transfer_ = ReadTransferHeader(Received());
  if (transfer_.command == kSubmit) {
    OnSubmit();
  } else if (transfer_.command == kUnlink) {
    OnUnlink();
  } else {
    Abort();
  }
}

void UsbipServer::Session::OnSubmit() {
  const std::uint32_t packets = transfer_.isochronousPackets;
  if (transfer_.length > kMaxTransferBytes || (packets != 0 && packets != kNotIsochronous) ||
      device_->pipe.Pending() >= kMaxPending) {
    Abort();
  } else {
    ReadThen(transfer_.isIn ? 0 : transfer_.length, &Session::OnData);
  }
}

void UsbipServer::Session::OnData() {
  if (transfer_.endpoint == 0) {
    AnswerControl();
  } else if (transfer_.endpoint == kBulkOut && !transfer_.isIn) {
    device_->pipe.Send(transfer_.sequence, std::string(Received()));
  } else if (transfer_.endpoint == kBulkIn && transfer_.isIn) {
    device_->pipe.Read(transfer_.sequence, transfer_.length);
  } else {
    Write(SubmitReply(transfer_.sequence, kTransferStalled, 0, {}));
  }
  ReadTransfer();
}

void UsbipServer::Session::AnswerControl() {
  const SetupPacket setup(transfer_.setup);
  if (setup.IsSoftReset()) device_->pipe.Reset();
  const auto answer = device_->descriptors.Answer(setup);
  if (!answer) {
    Write(SubmitReply(transfer_.sequence, kTransferStalled, 0, {}));
  } else if (transfer_.isIn) {
    const std::string_view data = std::string_view(*answer).substr(0, transfer_.length);
    Write(SubmitReply(transfer_.sequence, kTransferDone, data.size(), data));
  } else {
    Write(SubmitReply(transfer_.sequence, kTransferDone, transfer_.length, {}));
  }
}

// Of a transfer that has ended already the answer is on its way, and this one tells nothing new.
void UsbipServer::Session::OnUnlink() {
  const bool wasPending = device_->pipe.Cancel(transfer_.unlinked);
  Write(UnlinkReply(transfer_.sequence, wasPending ? kTransferUnlinked : kTransferDone));
  ReadTransfer();
}

void UsbipServer::Session::Completed(std::uint32_t sequence, std::size_t length,
                                     std::string_view data) {
  Write(SubmitReply(sequence, kTransferDone, length, data));
}

void UsbipServer::Session::Detach() {
  if (device_ != nullptr) std::exchange(device_, nullptr)->Detach();
}

void UsbipServer::Session::Abort() {
  Detach();
  asio::error_code ignored;
  socket_.close(ignored);
}

void UsbipServer::Session::Ended() {
  Detach();
  endsOnceWritten_ = true;
  if (queue_.empty()) Abort();
}

void UsbipServer::Session::Write(std::string message) {
  if (!socket_.is_open()) return;
  queuedBytes_ += message.size();
  queue_.push_back(std::move(message));
  if (queue_.size() == 1) WriteNext();
}

void UsbipServer::Session::WriteNext() {
  asio::async_write(socket_, asio::buffer(queue_.front()),
                    [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                      if (!self->socket_.is_open()) return;
                      if (error) return self->Abort();
                      self->queuedBytes_ -= self->queue_.front().size();
                      self->queue_.pop_front();
                      if (!self->queue_.empty()) {
                        self->WriteNext();
                      } else if (self->endsOnceWritten_) {
                        self->Abort();
                      }
                      const bool hasRoom = self->queuedBytes_ <= kMaxQueuedBytes;
                      if (hasRoom && self->waiting_)
                        (self.get()->*std::exchange(self->waiting_, nullptr))();
                    });
}

}  // namespace nuvsim
