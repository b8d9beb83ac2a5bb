// What a USB printer answers on its control endpoint: who it is and how it is built.
#ifndef NUVSIM_USB_DESCRIPTORS_H_
#define NUVSIM_USB_DESCRIPTORS_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "nuvsim/usb_id.h"

namespace nuvsim {

constexpr std::uint16_t kUsbDeviceRelease = 0x0100;
constexpr std::uint8_t kPrinterClass = 7;
constexpr std::uint8_t kPrinterSubclass = 1;
constexpr std::uint8_t kPrinterProtocol = 2;  // data in both directions

// The endpoints, of 512-byte packets.
constexpr std::uint8_t kBulkOut = 1;
constexpr std::uint8_t kBulkIn = 2;

// The packet that begins a control transfer.
struct SetupPacket {
  // From its eight bytes, little-endian.
  explicit SetupPacket(const std::array<std::uint8_t, 8>& bytes);

  bool IsSoftReset() const;  // of a printer: forget what has been received and is to be sent

  std::uint8_t type;  // direction, kind and recipient
  std::uint8_t request;
  std::uint16_t value;
  std::uint16_t index;
  std::uint16_t length;
};

// Thread-safety: none; the owner serialises calls.
class UsbDescriptors {
 public:
  // Of texts that are longer than a descriptor can be the beginning is told.
  UsbDescriptors(UsbId id, std::string model, std::string serial);

  // The data for the host, as many bytes as it asks for at most (none for a request that has no
  // answer); empty when the device does not know the request.
  std::optional<std::string> Answer(const SetupPacket& setup);

 private:
  std::optional<std::string> AnswerStandard(const SetupPacket& setup);
  std::optional<std::string> AnswerPrinter(const SetupPacket& setup) const;
  std::optional<std::string> Descriptor(std::uint16_t kindAndIndex) const;
  std::string Device() const;
  std::string Identification() const;

  UsbId id_;
  std::string model_;
  std::string serial_;
  std::uint8_t configuration_ = 0;
};

}  // namespace nuvsim

#endif  // NUVSIM_USB_DESCRIPTORS_H_
