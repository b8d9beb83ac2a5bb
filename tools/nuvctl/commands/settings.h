// Values of the printer that can be shown and set.
//
// A printer's acceptance does not mean that it keeps the value, so a set value is read back.
#ifndef NUVCTL_COMMANDS_SETTINGS_H_
#define NUVCTL_COMMANDS_SETTINGS_H_

#include <optional>
#include <string>

#include "error.h"
#include "library.h"
#include "output.h"

namespace NuvCtl {

template <typename Value>
struct Setting {
  const char* name;         // "the laser power"
  const char* refusalHint;  // advice when the printer refuses a new value
  int (*set)(const Value& value);
  int (*get)(Value& value);  // both return the library's result
  bool (*same)(const Value& wanted, const Value& actual);
  Report (*show)(const Value& value);
};

// The failure "not_confirmed": a value was set, but `actual` is what the printer then had.
CommandError NotConfirmed(const std::string& name, const Report& actual);

// Sets `wanted`, if there is one, and shows what the current printer has.
template <typename Value>
Report ShowOrSet(const Setting<Value>& setting, const std::optional<Value>& wanted) {
  if (wanted) {
    CheckOrder(setting.set(*wanted), std::string("Setting ") + setting.name, setting.refusalHint);
  }
  Value actual{};
  CheckQuery(setting.get(actual),
             std::string(wanted ? "Reading back " : "Reading ") + setting.name);
  Report report = setting.show(actual);
  if (wanted && !setting.same(*wanted, actual)) throw NotConfirmed(setting.name, report);
  return report;
}

// For values that have only one representation.
template <typename Value>
bool Equal(const Value& wanted, const Value& actual) {
  return wanted == actual;
}

}  // namespace NuvCtl

#endif  // NUVCTL_COMMANDS_SETTINGS_H_
