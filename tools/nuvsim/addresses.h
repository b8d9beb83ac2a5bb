// Addresses as texts and as numbers: of IPv4 in host byte order, and of USB devices.
#ifndef NUVSIM_ADDRESSES_H_
#define NUVSIM_ADDRESSES_H_

#include <cstdint>
#include <optional>
#include <string>

namespace NuvSim {

// Four decimal octets joined by "."; empty for anything else.
std::optional<uint32_t> ParseIpv4(const std::string& text);
std::string FormatIpv4(uint32_t address);

inline bool IsLoopback(uint32_t address) { return address >> 24 == 127; }

// The pair of numbers by which a host knows a USB device.
struct UsbId {
  uint16_t vendor = 0;
  uint16_t product = 0;
};

// Four hexadecimal digits, ":", four more, in any letter case ("11F1:2601"); empty for anything
// else.
std::optional<UsbId> ParseUsbId(const std::string& text);

}  // namespace NuvSim

#endif  // NUVSIM_ADDRESSES_H_
