#include "nuvsim/usb/usbip_message.h"

#include <algorithm>
#include <utility>

namespace NuvSim {
namespace {

constexpr size_t kPathBytes = 256;
constexpr uint32_t kBus = 1;
constexpr uint32_t kHighSpeed = 3;
constexpr size_t kReplyPadding = 8;
constexpr size_t kUnlinkReplyPadding = 24;

// Places in the header of a transfer.
constexpr size_t kSequenceAt = 4;
constexpr size_t kDirectionAt = 12;
constexpr size_t kEndpointAt = 16;
constexpr size_t kUnlinkedAt = 20;
constexpr size_t kLengthAt = 24;
constexpr size_t kPacketsAt = 32;
constexpr size_t kSetupAt = 40;

uint32_t Number(std::string_view bytes, size_t at, size_t size) {
  uint32_t number = 0;
  for (const char each : bytes.substr(at, size)) {
    number = number << 8 | static_cast<unsigned char>(each);
  }
  return number;
}

class Message {
 public:
  Message& Put8(uint32_t number) { return Put(number, 1); }
  Message& Put16(uint32_t number) { return Put(number, 2); }
  Message& Put32(uint32_t number) { return Put(number, 4); }
  Message& PutText(const std::string& text, size_t room) {
    std::string padded = text.substr(0, room - 1);
    padded.resize(room, '\0');
    bytes_ += padded;
    return *this;
  }
  Message& PutZeros(size_t count) {
    bytes_.append(count, '\0');
    return *this;
  }
  std::string Bytes() { return std::move(bytes_); }

 private:
  Message& Put(uint32_t number, size_t size) {
    for (size_t shift = size; shift-- > 0;) {
      bytes_ += static_cast<char>(number >> (8 * shift) & 0xffu);
    }
    return *this;
  }

  std::string bytes_;
};

Message OperationReply(uint16_t code, ImportStatus status) {
  Message message;
  message.Put16(kUsbipVersion).Put16(code).Put32(static_cast<uint32_t>(status));
  return message;
}

void PutDevice(const UsbAnnouncement& device, Message& message) {
  message.PutText("/sys/devices/nuvsim/usb1/" + device.busId, kPathBytes)
      .PutText(device.busId, kBusIdBytes)
      .Put32(kBus)
      .Put32(device.number)
      .Put32(kHighSpeed)
      .Put16(device.id.vendor)
      .Put16(device.id.product)
      .Put16(kUsbDeviceRelease)
      .PutZeros(3)  // the class stands at the interface
      .Put8(0)      // not configured yet
      .Put8(1)      // configurations
      .Put8(1);     // interfaces
}

Message TransferReply(uint32_t command, uint32_t sequence, int status) {
  Message message;
  message.Put32(command).Put32(sequence).PutZeros(12).Put32(static_cast<uint32_t>(status));
  return message;
}

}  // namespace

OperationHeader ReadOperationHeader(std::string_view bytes) {
  OperationHeader header;
  header.version = static_cast<uint16_t>(Number(bytes, 0, 2));
  header.code = static_cast<uint16_t>(Number(bytes, 2, 2));
  return header;
}

TransferHeader ReadTransferHeader(std::string_view bytes) {
  TransferHeader header;
  header.command = Number(bytes, 0, 4);
  header.sequence = Number(bytes, kSequenceAt, 4);
  header.isIn = Number(bytes, kDirectionAt, 4) != 0;
  header.endpoint = Number(bytes, kEndpointAt, 4);
  header.length = Number(bytes, kLengthAt, 4);
  header.isochronousPackets = Number(bytes, kPacketsAt, 4);
  const std::string_view setup = bytes.substr(kSetupAt, kSetupBytes);
  std::transform(setup.begin(), setup.end(), header.setup.begin(),
                 [](char each) { return static_cast<uint8_t>(each); });
  header.unlinked = Number(bytes, kUnlinkedAt, 4);
  return header;
}

std::string ListReplyHeader(uint32_t devices) {
  return OperationReply(kReplyList, ImportStatus::kOk).Put32(devices).Bytes();
}

std::string ListReplyDevice(const UsbAnnouncement& device) {
  Message message;
  PutDevice(device, message);
  return message.Put8(kPrinterClass).Put8(kPrinterSubclass).Put8(kPrinterProtocol).Put8(0).Bytes();
}

std::string ImportReply(const UsbAnnouncement& device) {
  Message message = OperationReply(kReplyImport, ImportStatus::kOk);
  PutDevice(device, message);
  return message.Bytes();
}

std::string ImportRefusal(ImportStatus status) {
  return OperationReply(kReplyImport, status).Bytes();
}

std::string SubmitReply(uint32_t sequence, int status, size_t length, std::string_view data) {
  return TransferReply(kSubmitReply, sequence, status)
      .Put32(static_cast<uint32_t>(length))
      .PutZeros(12)  // start frame, packets, errors: of isochronous transfers
      .PutZeros(kReplyPadding)
      .Bytes()
      .append(data);
}

std::string UnlinkReply(uint32_t sequence, int status) {
  return TransferReply(kUnlinkReply, sequence, status).PutZeros(kUnlinkReplyPadding).Bytes();
}

}  // namespace NuvSim
