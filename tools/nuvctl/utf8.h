// Text as it comes from users and printers: read, measured and made safe. Nothing here depends on
// the locale.
#ifndef NUVCTL_UTF8_H_
#define NUVCTL_UTF8_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace NuvCtl {

bool IsUtf8(std::string_view text);

// `text` with everything replaced by '?' that could steer a terminal or turn the reading order:
// control characters, direction marks, line separators, bytes that are not UTF-8.
std::string Printable(std::string_view text);

// Columns that printable UTF-8 takes on a terminal.
size_t DisplayWidth(std::string_view text);

// As much of it as fits so many columns.
std::string FirstColumns(std::string_view text, size_t columns);

}  // namespace NuvCtl

#endif  // NUVCTL_UTF8_H_
