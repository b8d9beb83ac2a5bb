#include "table.h"

#include <algorithm>

#include "text.h"

namespace nuvctl {
namespace {

constexpr size_t kGap = 2;

std::string Cell(const TableRow& row, size_t column) {
  const std::string text = column < row.size() ? Printable(row[column]) : std::string();
  return text.empty() ? "-" : text;
}

std::string Line(const TableRow& row, const std::vector<size_t>& widths) {
  std::string line;
  for (size_t column = 0; column < widths.size(); ++column) {
    const std::string cell = Cell(row, column);
    line += cell;
    if (column + 1 < widths.size()) {
      line.append(widths[column] - DisplayWidth(cell) + kGap, ' ');
    }
  }
  return line + '\n';
}

}  // namespace

std::string FormatTable(const TableRow& head, const std::vector<TableRow>& rows) {
  std::vector<size_t> widths;
  for (size_t column = 0; column < head.size(); ++column) {
    size_t width = DisplayWidth(Cell(head, column));
    for (const TableRow& row : rows) width = std::max(width, DisplayWidth(Cell(row, column)));
    widths.push_back(width);
  }
  std::string table = Line(head, widths);
  for (const TableRow& row : rows) table += Line(row, widths);
  return table;
}

std::string FormatFields(const std::vector<std::pair<std::string, std::string>>& fields) {
  size_t width = 0;
  for (const auto& [label, value] : fields) width = std::max(width, DisplayWidth(label));
  std::string lines;
  for (const auto& [label, value] : fields) {
    lines += label + ":" + std::string(width - DisplayWidth(label) + kGap, ' ') + Cell({value}, 0) +
             '\n';
  }
  return lines;
}

}  // namespace nuvctl
