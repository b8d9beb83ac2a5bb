#include "nuvsim/addresses.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace NuvSim {
namespace {

constexpr size_t kUsbIdDigits = 4;
constexpr int kHexadecimal = 16;

std::optional<uint16_t> ParseHexadecimal(const char* start) {
  uint16_t number = 0;
  const auto parsed = std::from_chars(start, start + kUsbIdDigits, number, kHexadecimal);
  if (parsed.ec != std::errc() || parsed.ptr != start + kUsbIdDigits) return std::nullopt;
  return number;
}

}  // namespace

std::optional<uint32_t> ParseIpv4(const std::string& text) {
  const char* at = text.data();
  const char* const last = at + text.size();
  uint32_t address = 0;
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (at == last || *at++ != '.')) return std::nullopt;
    uint8_t octet = 0;
    const auto parsed = std::from_chars(at, last, octet);
    if (parsed.ec != std::errc()) return std::nullopt;
    at = parsed.ptr;
    address = address << 8 | octet;
  }
  if (at != last) return std::nullopt;
  return address;
}

std::string FormatIpv4(uint32_t address) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += std::to_string(address >> shift & 0xffu);
    if (shift > 0) text += '.';
  }
  return text;
}

std::optional<UsbId> ParseUsbId(const std::string& text) {
  if (text.size() != 2 * kUsbIdDigits + 1 || text[kUsbIdDigits] != ':') return std::nullopt;
  const auto vendor = ParseHexadecimal(text.data());
  const auto product = ParseHexadecimal(text.data() + kUsbIdDigits + 1);
  if (!vendor || !product) return std::nullopt;
  return UsbId{*vendor, *product};
}

}  // namespace NuvSim
