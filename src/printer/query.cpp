#include "printer/query.h"

namespace Nuv::Printer {

void Take(const Outcome& outcome, std::initializer_list<std::pair<const char*, nuv_text*>> fields) {
  for (const auto& [key, text] : fields) {
    const auto found = outcome.fields.find(key);
    if (found != outcome.fields.end()) *text = Text(found->second);
  }
}

void Take(const Outcome& outcome, std::initializer_list<std::pair<const char*, nuv_int*>> fields) {
  for (const auto& [key, number] : fields) {
    if (outcome.fields.count(key) != 0) *number = Known(outcome.Number(key));
  }
}

std::string Line(const char* text) {
  if (text == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a text that is null"};
  std::string line = text;
  if (line.find_first_of("\r\n") == std::string::npos) return line;
  throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a text with a line end"};
}

}  // namespace Nuv::Printer
