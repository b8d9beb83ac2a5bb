// The tables of docs/protocol.md, so that a check can name the line of the page that it fails at.
#ifndef NUV_TESTS_PROTOCOL_PAGE_H_
#define NUV_TESTS_PROTOCOL_PAGE_H_

#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

namespace ProtocolPage {

using Strings = std::vector<std::string>;

// A row of a table: its cells by the heads of their columns.
struct Row {
  int line = 0;
  std::map<std::string, std::string> cells;

  std::string operator[](const std::string& head) const {
    const auto cell = cells.find(head);
    return cell == cells.end() ? "" : cell->second;
  }
  // Begins the message of a check.
  std::string Where() const {
    return "docs/protocol.md:" + (line == 0 ? "" : std::to_string(line) + ":") + " ";
  }
};

// What a pattern finds, each time as the parts in its parentheses.
inline std::vector<Strings> Find(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<Strings> found;
  for (std::sregex_iterator each(text.begin(), text.end(), regex), end; each != end; ++each) {
    found.emplace_back(std::next(each->begin()), each->end());
  }
  return found;
}

// The first part of each find: what stands in backticks.
inline Strings Quoted(const std::string& cell, const std::string& pattern = "`([^`]*)`") {
  Strings quoted;
  for (const Strings& each : Find(cell, pattern)) quoted.push_back(each.front());
  return quoted;
}

inline std::vector<int> Codes(const std::string& cell) {
  std::vector<int> codes;
  for (const std::string& code : Quoted(cell, "\\b(\\d{3})\\b")) codes.push_back(std::stoi(code));
  return codes;
}

// The rows of all tables whose first column has this head.
inline std::vector<Row> Rows(const std::string& firstHead) {
  std::ifstream page(NUV_SOURCE_FOLDER "/docs/protocol.md");
  std::vector<Row> rows;
  Strings heads;
  int number = 1;
  for (std::string line; std::getline(page, line); ++number) {
    const Strings cells = Quoted(line, "\\| *([^|]*?) *(?=\\|)");
    if (cells.empty() || heads.empty()) {
      heads = cells;
    } else if (heads.front() == firstHead && line.rfind("|---", 0) != 0) {
      rows.push_back({number, {}});
      for (size_t i = 0; i < cells.size(); ++i) rows.back().cells[heads.at(i)] = cells[i];
    }
  }
  return rows;
}

// The rows of the table of models that have a model, and its name.
inline std::vector<Row> Models() {
  std::vector<Row> models = Rows("Model");
  while (!models.empty() && models.back()["Model"].empty()) models.pop_back();
  return models;
}
inline std::string NameOf(const Row& model) { return Quoted(model["Model"]).at(0); }

// Whether the cell "Models" of a command means this model: all of them, one by its name, or those
// with a cross in a column; "X, not Y" leaves some of them out.
inline bool Means(const std::string& models, const Row& model) {
  const size_t exception = models.find(", not ");
  if (exception != std::string::npos) {
    return Means(models.substr(0, exception), model) && !Means(models.substr(exception + 6), model);
  }
  return models == "all" || models == NameOf(model) || (!models.empty() && model[models] == "x");
}

}  // namespace ProtocolPage

#endif  // NUV_TESTS_PROTOCOL_PAGE_H_
