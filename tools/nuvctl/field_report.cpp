#include "field_report.h"

#include <charconv>

#include "table.h"

namespace nuvctl {

void FieldReport::Add(const std::string& label, const std::string& text, const std::string& key,
                      nlohmann::ordered_json value) {
  fields_.emplace_back(label, text);
  json_[nlohmann::ordered_json::json_pointer('/' + key)] = std::move(value);
}

void FieldReport::AddText(const std::string& label, const std::string& key,
                          const std::string& text) {
  Add(label, text, key, text);
}

void FieldReport::AddNumber(const std::string& label, const std::string& key, int number,
                            const std::string& unit) {
  Add(label, std::to_string(number) + unit, key, number);
}

void FieldReport::AddMeasure(const std::string& label, const std::string& key,
                             const std::string& text, const std::string& unit) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result read = std::from_chars(text.data(), end, number);
  const bool whole = read.ec == std::errc() && read.ptr == end;
  Add(label, text.empty() ? text : text + unit, key,
      whole ? nlohmann::ordered_json(number) : nlohmann::ordered_json(text));
}

void FieldReport::AddFlag(const std::string& label, const std::string& key, bool flag) {
  Add(label, flag ? "yes" : "no", key, flag);
}

Report FieldReport::Finish() const { return {FormatFields(fields_), json_}; }

}  // namespace nuvctl
