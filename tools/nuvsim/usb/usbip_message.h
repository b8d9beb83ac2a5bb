// The messages of USB/IP version 1.1.1 as bytes: first operations (list, import), then, once a
// device is imported, transfers. Numbers are big-endian but for the setup packet, which goes over
// as USB has it.
#ifndef NUVSIM_USB_USBIP_MESSAGE_H_
#define NUVSIM_USB_USBIP_MESSAGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "nuvsim/usb/device.h"

namespace NuvSim {

constexpr uint16_t kUsbipVersion = 0x0111;

constexpr size_t kOperationBytes = 8;  // header of an operation
constexpr size_t kBusIdBytes = 32;     // follows a request to import
constexpr size_t kTransferBytes = 48;  // header of a transfer
constexpr size_t kSetupBytes = 8;

// Codes of operations.
constexpr uint16_t kRequestList = 0x8005;
constexpr uint16_t kReplyList = 0x0005;
constexpr uint16_t kRequestImport = 0x8003;
constexpr uint16_t kReplyImport = 0x0003;

// Commands of transfers.
constexpr uint32_t kSubmit = 1;
constexpr uint32_t kUnlink = 2;
constexpr uint32_t kSubmitReply = 3;
constexpr uint32_t kUnlinkReply = 4;

// How an import went.
enum class ImportStatus : uint32_t { kOk = 0, kBusy = 2, kNoDevice = 4 };

// How a transfer ended: Linux's error numbers, negative, on whatever system this runs.
constexpr int kTransferDone = 0;
constexpr int kTransferStalled = -32;    // EPIPE
constexpr int kTransferUnlinked = -104;  // ECONNRESET

struct OperationHeader {
  uint16_t version = 0;
  uint16_t code = 0;
};

struct TransferHeader {
  uint32_t command = 0;
  uint32_t sequence = 0;
  bool isIn = false;  // towards the host
  uint32_t endpoint = 0;
  // Of kSubmit:
  uint32_t length = 0;
  uint32_t isochronousPackets = 0;
  std::array<uint8_t, kSetupBytes> setup{};
  // Of kUnlink:
  uint32_t unlinked = 0;  // sequence number of the transfer to give up
};

// Each reads a header from exactly as many bytes as it has.
OperationHeader ReadOperationHeader(std::string_view bytes);
TransferHeader ReadTransferHeader(std::string_view bytes);

// A list is its header and then each device, with its interface.
std::string ListReplyHeader(uint32_t devices);
std::string ListReplyDevice(const UsbAnnouncement& device);
std::string ImportReply(const UsbAnnouncement& device);
std::string ImportRefusal(ImportStatus status);

// `length`: bytes transferred; `data`: those of a transfer to the host, else empty.
std::string SubmitReply(uint32_t sequence, int status, size_t length, std::string_view data);
std::string UnlinkReply(uint32_t sequence, int status);

}  // namespace NuvSim

#endif  // NUVSIM_USB_USBIP_MESSAGE_H_
