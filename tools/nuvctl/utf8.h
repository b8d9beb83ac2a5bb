// Text as it comes from users and printers: read, measured and made safe. Nothing here depends on
// the locale.
#ifndef NUVCTL_UTF8_H_
#define NUVCTL_UTF8_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NuvCtl {

// The wide string of `utf8` (UTF-16 or UTF-32, as wchar_t is wide); nothing when it is not UTF-8.
std::optional<std::wstring> WideFromUtf8(std::string_view utf8);

// `text` with everything replaced by '?' that could steer a terminal or turn the reading order:
// control characters, direction marks, line separators, bytes that are not UTF-8.
std::string Printable(std::string_view text);

// Columns that printable UTF-8 takes on a terminal.
size_t DisplayWidth(std::string_view text);

}  // namespace NuvCtl

#endif  // NUVCTL_UTF8_H_
