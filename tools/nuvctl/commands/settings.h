// Values of the printer that can be shown and set.
//
// A printer's acceptance does not mean that it keeps the value, so a set value is read back.
#ifndef NUVCTL_COMMANDS_SETTINGS_H_
#define NUVCTL_COMMANDS_SETTINGS_H_

#include <optional>
#include <string>

#include "error.h"
#include "output.h"
#include "target.h"

namespace NuvCtl {

template <typename Value, typename Wire = Value>
struct Setting {
  const char* name;         // "the laser power"
  const char* refusalHint;  // advice when the printer refuses a new value
  void (nuv::Printer::*set)(Wire value, const nuv::Call& call);
  Value (nuv::Printer::*get)(const nuv::Call& call) const;
  bool (*same)(const Value& wanted, const Value& actual);
  Report (*show)(const Value& value);
};

// The failure "not_confirmed": a value was set, but `actual` is what the printer then had.
CommandError NotConfirmed(const std::string& name, const Report& actual);

// `report` of what is, with what was: "was 80, now 75".
Report WithEarlier(Report report, const Report& earlier);

// Sets `wanted`, if there is one, and shows what the printer has.
template <typename Value, typename Wire>
Report ShowOrSet(const Setting<Value, Wire>& setting, Target& target,
                 const std::optional<Value>& wanted) {
  const Value before = target.Ask(std::string("Reading ") + setting.name, setting.get);
  if (!wanted) return setting.show(before);
  target.Tell(std::string("Setting ") + setting.name, setting.refusalHint, setting.set, *wanted);
  const Value actual = target.Ask(std::string("Reading back ") + setting.name, setting.get);
  const Report report = setting.show(actual);
  if (!setting.same(*wanted, actual)) throw NotConfirmed(setting.name, report);
  return setting.same(before, actual) ? report : WithEarlier(report, setting.show(before));
}

// For values that have only one representation.
template <typename Value>
bool Equal(const Value& wanted, const Value& actual) {
  return wanted == actual;
}

}  // namespace NuvCtl

#endif  // NUVCTL_COMMANDS_SETTINGS_H_
