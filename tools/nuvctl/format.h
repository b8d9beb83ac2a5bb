// Values laid out for reading: tables, label and value pairs, sizes, times. Nothing here depends on
// the locale.
#ifndef NUVCTL_FORMAT_H_
#define NUVCTL_FORMAT_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace NuvCtl {

using TableRow = std::vector<std::string>;

// `head` and `rows` in left-aligned columns, two blanks apart, one line each. Cells are made
// printable; an empty cell shows as "-"; a row may be shorter than the head.
std::string FormatTable(const TableRow& head, const std::vector<TableRow>& rows);

using Fields = std::vector<std::pair<std::string, std::string>>;

// One line "label:  value" each, the values under one another.
std::string FormatFields(const Fields& fields);

// "512 B", "1.2 kB", "3.4 MB" (decimal units, rounded down); negative counts as 0.
std::string FormatBytes(int64_t bytes);

// "0:42", "12:03", "1:02:03"; negative counts as 0.
std::string FormatDuration(int64_t seconds);

// A printer's "20270131" as "2027-01-31" and "20261121T103000" as "2026-11-21 10:30:00"; anything
// else as it is, "-" (not yet) as nothing.
std::string FormatStamp(const std::string& stamp);

// The name of `number` among `names`, or "unknown (7)": a later firmware may have more.
template <size_t Count>
std::string FormatName(const char* const (&names)[Count], int number) {
  if (number >= 0 && static_cast<size_t>(number) < Count) return names[number];
  return "unknown (" + std::to_string(number) + ")";
}

}  // namespace NuvCtl

#endif  // NUVCTL_FORMAT_H_
