// A USB printer: what it answers on its control endpoint - who it is, how it is built - and how it
// comes and goes on the bus.
#ifndef NUVSIM_USB_DEVICE_H_
#define NUVSIM_USB_DEVICE_H_

#include <array>
#include <asio/io_context.hpp>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "nuvsim/addresses.h"
#include "nuvsim/usb/pipe.h"
#include "nuvsim/wire.h"

namespace NuvSim {

constexpr uint16_t kUsbDeviceRelease = 0x0100;
constexpr uint8_t kPrinterClass = 7;
constexpr uint8_t kPrinterSubclass = 1;
constexpr uint8_t kPrinterProtocol = 2;  // data in both directions

// The endpoints, of 512-byte packets.
constexpr uint8_t kBulkOut = 1;
constexpr uint8_t kBulkIn = 2;

// The packet that begins a control transfer.
struct SetupPacket {
  // From its eight bytes, little-endian.
  explicit SetupPacket(const std::array<uint8_t, 8>& bytes);

  bool IsSoftReset() const;  // of a printer: forget what has been received and is to be sent

  uint8_t type;  // direction, kind and recipient
  uint8_t request;
  uint16_t value;
  uint16_t index;
  uint16_t length;
};

// What it answers.
//
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
  std::optional<std::string> Descriptor(uint16_t kindAndIndex) const;
  std::string Device() const;
  std::string Identification() const;

  UsbId id_;
  std::string model_;
  std::string serial_;
  uint8_t configuration_ = 0;
};

// A device as a bus announces it.
struct UsbAnnouncement {
  uint32_t number = 0;  // on its bus, which is number 1
  std::string busId;    // by which a host asks for it
  UsbId id;
};

// A printer on the simulator's USB bus. Numbers are counted from 0.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
class UsbDevice {
 public:
  UsbDevice(asio::io_context& io, Wire& wire, size_t number, UsbId id, const std::string& model,
            const std::string& serial);

  const UsbAnnouncement& Announced() const { return announced_; }

  // Unplugged, it is on no list, cannot be imported, and the host that had it loses it.
  void Plug() { isPlugged_ = true; }
  void Unplug();
  void Hide() { isPlugged_ = false; }  // unplugged, but for the host that has it
  bool IsPlugged() const { return isPlugged_; }

  // As those of UsbPipe.
  void Attach(UsbHost& host);
  void Detach();

  UsbPipe pipe;
  UsbDescriptors descriptors;

 private:
  UsbAnnouncement announced_;
  UsbHost* host_ = nullptr;
  bool isPlugged_ = false;
};

}  // namespace NuvSim

#endif  // NUVSIM_USB_DEVICE_H_
