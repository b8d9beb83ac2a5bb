#include "format.h"

#include <algorithm>

#include "utf8.h"

namespace NuvCtl {
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

std::string TwoDigits(int64_t value) { return (value < 10 ? "0" : "") + std::to_string(value); }

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

std::string FormatBytes(int64_t bytes) {
  constexpr int64_t kStep = 1000;
  constexpr const char* kUnits[] = {" kB", " MB", " GB"};
  bytes = std::max<int64_t>(bytes, 0);
  if (bytes < kStep) return std::to_string(bytes) + " B";
  size_t unit = 0;
  while (bytes >= kStep * kStep && unit + 1 < std::size(kUnits)) {
    bytes /= kStep;
    ++unit;
  }
  // Whole numbers, because the decimal point of a formatted fraction follows the locale.
  return std::to_string(bytes / kStep) + "." + std::to_string(bytes % kStep / (kStep / 10)) +
         kUnits[unit];
}

std::string FormatDuration(int64_t seconds) {
  seconds = std::max<int64_t>(seconds, 0);
  const int64_t hours = seconds / 3600;
  const int64_t minutes = seconds / 60 % 60;
  const std::string tail = ":" + TwoDigits(seconds % 60);
  if (hours == 0) return std::to_string(minutes) + tail;
  return std::to_string(hours) + ":" + TwoDigits(minutes) + tail;
}

std::string FormatStamp(const std::string& stamp) {
  constexpr size_t kDateDigits = 8;
  constexpr size_t kTimeDigits = 6;
  if (stamp == "-") return std::string();
  const bool timed = stamp.size() == kDateDigits + 1 + kTimeDigits && stamp[kDateDigits] == 'T';
  const auto digits = static_cast<size_t>(
      std::count_if(stamp.begin(), stamp.end(), [](char c) { return c >= '0' && c <= '9'; }));
  if (!timed && stamp.size() != kDateDigits) return stamp;
  if (digits != kDateDigits + (timed ? kTimeDigits : 0)) return stamp;
  const auto part = [&stamp](size_t first, size_t length = 2) {
    return stamp.substr(first, length);
  };
  const std::string date = part(0, 4) + '-' + part(4) + '-' + part(6);
  return timed ? date + ' ' + part(9) + ':' + part(11) + ':' + part(13) : date;
}

}  // namespace NuvCtl
