// Text laid out for reading: tables, and label and value pairs.
#ifndef NUVCTL_TABLE_H_
#define NUVCTL_TABLE_H_

#include <string>
#include <utility>
#include <vector>

namespace nuvctl {

using TableRow = std::vector<std::string>;

// `head` and `rows` in left-aligned columns, two blanks apart, one line each. Cells are made
// printable; an empty cell shows as "-"; a row may be shorter than the head.
std::string FormatTable(const TableRow& head, const std::vector<TableRow>& rows);

// One line "label:  value" each, the values under one another.
std::string FormatFields(const std::vector<std::pair<std::string, std::string>>& fields);

}  // namespace nuvctl

#endif  // NUVCTL_TABLE_H_
