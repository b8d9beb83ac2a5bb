// An answer of single values, built once for people and once for scripts.
#ifndef NUVCTL_FIELD_REPORT_H_
#define NUVCTL_FIELD_REPORT_H_

#include <string>
#include <utility>
#include <vector>

#include "report.h"

namespace nuvctl {

// Units that are not ASCII, in UTF-8, each after the blank that parts it from its number.
constexpr char kCelsius[] =
    " \xC2\xB0"
    "C";
constexpr char kMicrometres[] = " \xC2\xB5m";

// `label` is what people read, `key` what scripts do; "sensors/tank" is the key `tank` of the
// object `sensors`.
class FieldReport {
 public:
  void Add(const std::string& label, const std::string& text, const std::string& key,
           nlohmann::ordered_json value);
  void AddText(const std::string& label, const std::string& key, const std::string& text);
  // `unit`: for people only, with a blank before it.
  void AddNumber(const std::string& label, const std::string& key, int number,
                 const std::string& unit = std::string());
  // A number that the library hands out as text: for scripts a number if it is a whole one.
  void AddMeasure(const std::string& label, const std::string& key, const std::string& text,
                  const std::string& unit);
  void AddFlag(const std::string& label, const std::string& key, bool flag);

  Report Finish() const;

 private:
  std::vector<std::pair<std::string, std::string>> fields_;
  nlohmann::ordered_json json_ = nlohmann::ordered_json::object();
};

}  // namespace nuvctl

#endif  // NUVCTL_FIELD_REPORT_H_
