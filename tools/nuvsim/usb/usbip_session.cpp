#include "nuvsim/usb/usbip_session.h"

#include <algorithm>
#include <utility>

namespace NuvSim {
namespace {

// Far more than a driver sends; a host that goes beyond is not one.
constexpr size_t kMaxTransferBytes = size_t{1} << 20;
constexpr size_t kMaxPending = 256;

// What the header of a transfer that is not isochronous holds as the number of packets.
constexpr uint32_t kNotIsochronous = 0xffffffffu;

}  // namespace

std::string UsbBus::List() const {
  std::string records;
  uint32_t count = 0;
  for (const UsbDevice* each : devices_) {
    if (!each->IsPlugged()) continue;
    records += ListReplyDevice(each->Announced());
    ++count;
  }
  return ListReplyHeader(count) + records;
}

UsbDevice* UsbBus::Find(std::string_view busId) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [busId](const auto* each) {
    return each->IsPlugged() && each->Announced().busId == busId;
  });
  return found == devices_.end() ? nullptr : *found;
}

void UsbipSession::GoOn(size_t wanted, Step next) {
  wanted_ = wanted;
  next_ = next;
}

void UsbipSession::OnOperation(std::string_view bytes) {
  const OperationHeader header = ReadOperationHeader(bytes);
  if (header.version == kUsbipVersion && header.code == kRequestList) {
    connection_.Write(bus_.List());
  } else if (header.version == kUsbipVersion && header.code == kRequestImport) {
    GoOn(kBusIdBytes, &UsbipSession::OnImport);
  } else {
    connection_.Abort();
  }
}

void UsbipSession::OnImport(std::string_view bytes) {
  UsbDevice* const device = bus_.Find(bytes.substr(0, bytes.find('\0')));
  if (device == nullptr || device->pipe.IsAttached()) {
    connection_.Write(
        ImportRefusal(device == nullptr ? ImportStatus::kNoDevice : ImportStatus::kBusy));
    connection_.EndOnceWritten();
    return;
  }
  device_ = device;
  device_->Attach(*this);
  connection_.Write(ImportReply(device_->Announced()));
  GoOn(kTransferBytes, &UsbipSession::OnTransfer);
}

void UsbipSession::OnTransfer(std::string_view bytes) {
  transfer_ = ReadTransferHeader(bytes);
  if (transfer_.command == kSubmit) {
    OnSubmit();
  } else if (transfer_.command == kUnlink) {
    OnUnlink();
  } else {
    connection_.Abort();
  }
}

void UsbipSession::OnSubmit() {
  const uint32_t packets = transfer_.isochronousPackets;
  if (transfer_.length > kMaxTransferBytes || (packets != 0 && packets != kNotIsochronous) ||
      device_->pipe.Pending() >= kMaxPending) {
    connection_.Abort();
  } else {
    GoOn(transfer_.isIn ? 0 : transfer_.length, &UsbipSession::OnData);
  }
}

void UsbipSession::OnData(std::string_view bytes) {
  GoOn(kTransferBytes, &UsbipSession::OnTransfer);
  if (transfer_.endpoint == 0) {
    AnswerControl();
  } else if (transfer_.endpoint == kBulkOut && !transfer_.isIn) {
    device_->pipe.Send(transfer_.sequence, std::string(bytes));
  } else if (transfer_.endpoint == kBulkIn && transfer_.isIn) {
    device_->pipe.Read(transfer_.sequence, transfer_.length);
  } else {
    connection_.Write(SubmitReply(transfer_.sequence, kTransferStalled, 0, {}));
  }
}

void UsbipSession::AnswerControl() {
  const SetupPacket setup(transfer_.setup);
  if (setup.IsSoftReset()) device_->pipe.Reset();
  const auto answer = device_->descriptors.Answer(setup);
  if (!answer) {
    connection_.Write(SubmitReply(transfer_.sequence, kTransferStalled, 0, {}));
  } else if (transfer_.isIn) {
    const std::string_view data = std::string_view(*answer).substr(0, transfer_.length);
    connection_.Write(SubmitReply(transfer_.sequence, kTransferDone, data.size(), data));
  } else {
    connection_.Write(SubmitReply(transfer_.sequence, kTransferDone, transfer_.length, {}));
  }
}

// Of a transfer that has ended already the answer is on its way, and this one tells nothing new.
void UsbipSession::OnUnlink() {
  const bool wasPending = device_->pipe.Cancel(transfer_.unlinked);
  connection_.Write(
      UnlinkReply(transfer_.sequence, wasPending ? kTransferUnlinked : kTransferDone));
}

void UsbipSession::Completed(uint32_t sequence, size_t length, std::string_view data) {
  connection_.Write(SubmitReply(sequence, kTransferDone, length, data));
}

void UsbipSession::Ended() {
  Detach();
  connection_.EndOnceWritten();
}

void UsbipSession::Detach() {
  if (device_ != nullptr) std::exchange(device_, nullptr)->Detach();
}

}  // namespace NuvSim
