// The pair of numbers by which a host knows a USB device.
#ifndef NUVSIM_USB_ID_H_
#define NUVSIM_USB_ID_H_

#include <cstdint>
#include <optional>
#include <string>

namespace nuvsim {

struct UsbId {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
};

// Four hexadecimal digits, ":", four more, in any letter case ("11F1:2601"); empty for anything
// else.
std::optional<UsbId> ParseUsbId(const std::string& text);

}  // namespace nuvsim

#endif  // NUVSIM_USB_ID_H_
