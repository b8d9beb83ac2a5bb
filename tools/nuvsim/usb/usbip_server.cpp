#include "nuvsim/usb/usbip_server.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <cstddef>
#include <deque>
#include <utility>

#include "nuvsim/usb/usbip_message.h"

namespace NuvSim {
namespace {

constexpr size_t kMaxSessions = 64;
// Far more than a driver sends; a host that goes beyond is not one.
constexpr size_t kMaxTransferBytes = size_t{1} << 20;
constexpr size_t kMaxPending = 256;
// A host that does not take its answers is not read from while this much is unsent.
constexpr size_t kMaxQueuedBytes = size_t{4} << 20;

// What the header of a transfer that is not isochronous holds as the number of packets.
constexpr uint32_t kNotIsochronous = 0xffffffffu;

}  // namespace

// One host: it may ask for the list, and may import one device, which is its own until the
// connection ends.
class UsbipServer::Session : public UsbHost, public std::enable_shared_from_this<Session> {
 public:
  Session(asio::ip::tcp::socket socket, const UsbipServer& server);

  void Start();
  // Ends the connection at once.
  void Abort();
  // Ends it once the host has been told all that is to be told; it sees the device disconnected.
  void Ended() override;
  void Completed(uint32_t sequence, size_t length, std::string_view data) override;

 private:
  using Step = void (Session::*)();

  // Reads so many bytes into buffer_, then goes on with `next`.
  void ReadThen(size_t length, Step next);
  std::string_view Received() const { return {buffer_.data(), buffer_.size()}; }

  void ReadOperation();
  void OnOperation();
  void OnImport();
  void ReadTransfer();
  void OnTransfer();
  void OnSubmit();
  void OnData();
  void AnswerControl();
  void OnUnlink();

  void Write(std::string message);
  void WriteNext();
  void Detach();

  asio::ip::tcp::socket socket_;
  const UsbipServer& server_;
  UsbDevice* device_ = nullptr;  // imported
  std::vector<char> buffer_;
  TransferHeader transfer_;        // being received
  std::deque<std::string> queue_;  // the front one is being sent
  size_t queuedBytes_ = 0;
  Step waiting_ = nullptr;  // what goes on once the host has taken enough of the queue
  bool endsOnceWritten_ = false;
};

UsbipServer::Session::Session(asio::ip::tcp::socket socket, const UsbipServer& server)
    : socket_(std::move(socket)), server_(server) {}

void UsbipServer::Session::Start() {
  asio::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  ReadOperation();
}

void UsbipServer::Session::ReadThen(size_t length, Step next) {
  buffer_.resize(length);
  asio::async_read(socket_, asio::buffer(buffer_),
                   [self = shared_from_this(), next](const asio::error_code& error, size_t) {
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
  const uint32_t packets = transfer_.isochronousPackets;
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

void UsbipServer::Session::Completed(uint32_t sequence, size_t length, std::string_view data) {
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
                      const bool hasRoom = self->queuedBytes_ <= kMaxQueuedBytes;
                      if (hasRoom && self->waiting_)
                        (self.get()->*std::exchange(self->waiting_, nullptr))();
                    });
}

UsbipServer::UsbipServer(asio::io_context& io, uint32_t address, uint16_t port,
                         std::vector<UsbDevice*> devices)
    : listener_(io, [this](asio::ip::tcp::socket socket) { Serve(std::move(socket)); }),
      devices_(std::move(devices)) {
  listener_.Listen(address, port);
}

UsbipServer::~UsbipServer() = default;

void UsbipServer::Serve(asio::ip::tcp::socket socket) {
  sessions_.remove_if([](const auto& each) { return each.expired(); });
  if (sessions_.size() < kMaxSessions) {
    auto session = std::make_shared<Session>(std::move(socket), *this);
    sessions_.push_back(session);
    session->Start();
  }
  listener_.Accept();
}

void UsbipServer::Close() {
  listener_.Close();
  for (const auto& each : sessions_) {
    if (const auto session = each.lock()) session->Abort();
  }
}

std::string UsbipServer::List() const {
  std::string records;
  uint32_t count = 0;
  for (const UsbDevice* each : devices_) {
    if (!each->IsPlugged()) continue;
    records += ListReplyDevice(each->Announced());
    ++count;
  }
  return ListReplyHeader(count) + records;
}

UsbDevice* UsbipServer::Find(std::string_view busId) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [busId](const auto* each) {
    return each->IsPlugged() && each->Announced().busId == busId;
  });
  return found == devices_.end() ? nullptr : *found;
}

}  // namespace NuvSim
