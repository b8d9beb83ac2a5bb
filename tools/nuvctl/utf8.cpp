#include "utf8.h"

#include <algorithm>
#include <optional>

namespace NuvCtl {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Controls, then marks that turn or hide what follows: zero width and direction marks, line and
// paragraph separators, byte order mark, interlinear and tag characters.
constexpr Range kUnsafe[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
                             {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F},
                             {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};
constexpr Range kCombining[] = {{0x0300, 0x036F}, {0x1AB0, 0x1AFF}, {0x20D0, 0x20FF},
                                {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
constexpr Range kWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF},   {0xAC00, 0xD7A3},
                           {0xF900, 0xFAFF}, {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                           {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x20000, 0x3FFFD}};

template <size_t Count>
bool Contains(const Range (&ranges)[Count], char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
    return range.first <= code && code <= range.last;
  });
}

constexpr bool IsContinuation(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

// Takes one code point off the front of `text`. Nothing when the front is not UTF-8 (also overlong
// forms, surrogates and values beyond Unicode); one byte is then taken off.
std::optional<char32_t> TakeCodePoint(std::string_view& text) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // by length: no overlong forms
  const auto first = static_cast<unsigned char>(text.front());
  const size_t length = first < 0x80U             ? 1
                        : (first & 0xE0U) == 0xC0 ? 2
                        : (first & 0xF0U) == 0xE0 ? 3
                        : (first & 0xF8U) == 0xF0 ? 4
                                                  : 0;
  char32_t code = length < 2 ? first : first & (0x7FU >> length);
  bool valid = length != 0 && length <= text.size();
  for (size_t i = 1; valid && i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    valid = IsContinuation(byte);
    code = (code << 6U) | (byte & 0x3FU);
  }
  valid =
      valid && code >= kSmallest[length] && code <= 0x10FFFF && !(0xD800 <= code && code <= 0xDFFF);
  text.remove_prefix(valid ? length : 1);
  return valid ? std::optional<char32_t>(code) : std::nullopt;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    if (!TakeCodePoint(text)) return false;
  }
  return true;
}

std::string Printable(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    const std::string_view before = text;
    const std::optional<char32_t> code = TakeCodePoint(text);
    if (code && !Contains(kUnsafe, *code)) {
      safe += before.substr(0, before.size() - text.size());
    } else {
      safe += '?';
    }
  }
  return safe;
}

size_t DisplayWidth(std::string_view text) {
  size_t columns = 0;
  while (!text.empty()) {
    const char32_t code = TakeCodePoint(text).value_or(U'?');
    if (!Contains(kCombining, code)) columns += Contains(kWide, code) ? 2 : 1;
  }
  return columns;
}

std::string FirstColumns(std::string_view text, size_t columns) {
  std::string_view rest = text;
  std::string first;
  while (!rest.empty()) {
    const std::string_view before = rest;
    TakeCodePoint(rest);
    const std::string_view one = before.substr(0, before.size() - rest.size());
    if (DisplayWidth(first) + DisplayWidth(one) > columns) break;
    first += one;
  }
  return first;
}

}  // namespace NuvCtl
