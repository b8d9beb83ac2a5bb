#include "nuvsim/usb/usbip_message.h"

#include <algorithm>
#include <utility>

namespace nuvsim {
namespace {

constexpr std::size_t kPathBytes = 256;
constexpr std::uint32_t kBus = 1;
constexpr std::uint32_t kHighSpeed = 3;
constexpr std::size_t kReplyPadding = 8;
constexpr std::size_t kUnlinkReplyPadding = 24;

// Places in the header of a transfer.
constexpr std::size_t kSequenceAt = 4;
constexpr std::size_t kDirectionAt = 12;
constexpr std::size_t kEndpointAt = 16;
constexpr std::size_t kUnlinkedAt = 20;
constexpr std::size_t kLengthAt = 24;
constexpr std::size_t kPacketsAt = 32;
constexpr std::size_t kSetupAt = 40;

std::uint32_t Number(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint32_t number = 0;
  for (const char each : bytes.substr(at, size)) {
    number = number << 8 | static_cast<unsigned char>(each);
  }
  return number;
}

class Message {
 public:
  Message& Put8(std::uint32_t number) { return Put(number, 1); }
  Message& Put16(std::uint32_t number) { return Put(number, 2); }
  Message& Put32(std::uint32_t number) { return Put(number, 4); }
  Message& PutText(const std::string& text, std::size_t room) {
    std::string padded = text.substr(0, room - 1);
    padded.resize(room, '\0');
    bytes_ += padded;
    return *this;
  }
  Message& PutZeros(std::size_t count) {
    bytes_.append(count, '\0');
    return *this;
  }
  std::string Bytes() { return std::move(bytes_); }

 private:
  Message& Put(std::uint32_t number, std::size_t size) {
    for (std::size_t shift = size; shift-- > 0;) {
      bytes_ += static_cast<char>(number >> (8 * shift) & 0xffu);
    }
    return *this;
  }

  std::string bytes_;
};

Message OperationReply(std::uint16_t code, ImportStatus status) {
  Message message;
  message.Put16(kUsbipVersion).Put16(code).Put32(static_cast<std::uint32_t>(status));
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

Message TransferReply(std::uint32_t command, std::uint32_t sequence, std::int32_t status) {
  Message message;
  message.Put32(command).Put32(sequence).PutZeros(12).Put32(static_cast<std::uint32_t>(status));
  return message;
}

}  // namespace

OperationHeader ReadOperationHeader(std::string_view bytes) {
  OperationHeader header;
  header.version = static_cast<std::uint16_t>(Number(bytes, 0, 2));
  header.code = static_cast<std::uint16_t>(Number(bytes, 2, 2));
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
                 [](char each) { return static_cast<std::uint8_t>(each); });
  header.unlinked = Number(bytes, kUnlinkedAt, 4);
  return header;
}

std::string ListReplyHeader(std::uint32_t devices) {
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

std::string SubmitReply(std::uint32_t sequence, std::int32_t status, std::size_t length,
                        std::string_view data) {
  return TransferReply(kSubmitReply, sequence, status)
      .Put32(static_cast<std::uint32_t>(length))
      .PutZeros(12)  // start frame, packets, errors: of isochronous transfers
      .PutZeros(kReplyPadding)
      .Bytes()
      .append(data);
}

std::string UnlinkReply(std::uint32_t sequence, std::int32_t status) {
  return TransferReply(kUnlinkReply, sequence, status).PutZeros(kUnlinkReplyPadding).Bytes();
}

}  // namespace nuvsim
