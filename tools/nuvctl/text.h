// Text as it comes from users and printers, and as it goes to a terminal. Nothing here depends on
// the locale.
#ifndef NUVCTL_TEXT_H_
#define NUVCTL_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nuvctl {

// The wide string of `utf8` (UTF-16 or UTF-32, as wchar_t is wide); nothing when it is not UTF-8.
std::optional<std::wstring> WideFromUtf8(std::string_view utf8);

// `text` with everything replaced by '?' that could steer a terminal or turn the reading order:
// control characters, direction marks, line separators, bytes that are not UTF-8.
std::string Printable(std::string_view text);

// Columns that printable UTF-8 takes on a terminal.
size_t DisplayWidth(std::string_view text);

// "512 B", "1.2 kB", "3.4 MB" (decimal units, rounded down); negative counts as 0.
std::string FormatBytes(int64_t bytes);

// "0:42", "12:03", "1:02:03"; negative counts as 0.
std::string FormatDuration(int64_t seconds);

// A printer's "20270131" as "2027-01-31" and "20261121T103000" as "2026-11-21 10:30:00"; anything
// else as it is, "-" (not yet) as nothing.
std::string FormatStamp(const std::string& stamp);

}  // namespace nuvctl

#endif  // NUVCTL_TEXT_H_
