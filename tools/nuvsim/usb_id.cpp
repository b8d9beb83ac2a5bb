#include "nuvsim/usb_id.h"

#include <charconv>

namespace nuvsim {
namespace {

constexpr std::size_t kDigits = 4;
constexpr int kHexadecimal = 16;

std::optional<std::uint16_t> ParseNumber(const char* start) {
  std::uint16_t number = 0;
  const auto parsed = std::from_chars(start, start + kDigits, number, kHexadecimal);
  if (parsed.ec != std::errc() || parsed.ptr != start + kDigits) return std::nullopt;
  return number;
}

}  // namespace

std::optional<UsbId> ParseUsbId(const std::string& text) {
  if (text.size() != 2 * kDigits + 1 || text[kDigits] != ':') return std::nullopt;
  const auto vendor = ParseNumber(text.data());
  const auto product = ParseNumber(text.data() + kDigits + 1);
  if (!vendor || !product) return std::nullopt;
  return UsbId{*vendor, *product};
}

}  // namespace nuvsim
