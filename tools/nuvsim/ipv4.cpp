#include "nuvsim/ipv4.h"

#include <charconv>

namespace nuvsim {

std::optional<std::uint32_t> ParseIpv4(const std::string& text) {
  const char* at = text.data();
  const char* const last = at + text.size();
  std::uint32_t address = 0;
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (at == last || *at++ != '.')) return std::nullopt;
    std::uint8_t octet = 0;
    const auto parsed = std::from_chars(at, last, octet);
    if (parsed.ec != std::errc()) return std::nullopt;
    at = parsed.ptr;
    address = address << 8 | octet;
  }
  if (at != last) return std::nullopt;
  return address;
}

std::string FormatIpv4(std::uint32_t address) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += std::to_string(address >> shift & 0xffu);
    if (shift > 0) text += '.';
  }
  return text;
}

}  // namespace nuvsim
