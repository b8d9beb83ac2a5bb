#include <cstdint>
#include <type_traits>

#include "platform/text.h"

namespace Nuv::Platform {
namespace {

constexpr uint32_t kMaxCodePoint = 0x10FFFF;

bool IsSurrogate(uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

void AppendUtf8(uint32_t code, std::string& out) {
  const auto tail = [&](int shift) { out += static_cast<char>(0x80U | ((code >> shift) & 0x3FU)); };
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0U | (code >> 6));
    tail(0);
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0U | (code >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | (code >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

std::optional<std::string> NarrowPath(const std::wstring& path) {
  std::string narrow;
  narrow.reserve(path.size());
  for (const wchar_t unit : path) {
    const auto code = static_cast<uint32_t>(std::make_unsigned_t<wchar_t>(unit));
    if (code > kMaxCodePoint || IsSurrogate(code)) return std::nullopt;
    AppendUtf8(code, narrow);
  }
  return narrow;
}

std::wstring FileName(const std::wstring& path) { return path.substr(path.find_last_of(L'/') + 1); }

}  // namespace Nuv::Platform
