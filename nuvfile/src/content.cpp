#include "nuvfile/content.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <unordered_set>

#include "header.h"

namespace NuvFile {
namespace {

constexpr size_t kMaxArgumentNameLength = 64;

enum class Number { kNone, kWhole, kDecimal };

struct ArgumentRule {
  std::string_view name;
  Number number;
};

// What job opening reads. Names that are not here are carried as they are.
constexpr ArgumentRule kArgumentRules[] = {
    {"job_name", Number::kNone},
    {"layers", Number::kWhole},
    {"layer_thickness_mm", Number::kDecimal},
    {"print_minutes", Number::kWhole},
    {"resin_ml", Number::kDecimal},
    {"exposure_s", Number::kDecimal},
    {"bottom_exposure_s", Number::kDecimal},
    {"lift_mm", Number::kDecimal},
    {"lift_mm_s", Number::kDecimal},
    {"retract_mm_s", Number::kDecimal},
    {"laser_power_percent", Number::kDecimal},
};

// Not std::isalnum and its kin: those follow the host's locale.
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLetterOrDigit(char c) {
  return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsNameCharacter(char c) { return IsLetterOrDigit(c) || c == '_' || c == '.' || c == '-'; }

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool HasControl(std::string_view text) { return std::any_of(text.begin(), text.end(), IsControl); }

// File content goes into messages and from there to terminals and logs.
std::string Quoted(std::string_view text) {
  constexpr size_t kShown = 80;
  std::string out = "'";
  for (char c : text.substr(0, kShown)) out += IsControl(c) ? '?' : c;
  return out + (text.size() > kShown ? "...'" : "'");
}

// Reads all of `text`, or nothing.
template <typename T>
bool ReadNumber(std::string_view text, T* value) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, *value);
  return error == std::errc() && stop == end;
}

bool IsWhole(std::string_view text) {
  uint32_t value = 0;
  return ReadNumber(text, &value) && value <= kMaxWholeNumber;
}

bool IsDecimal(std::string_view text) {
  double value = 0;
  return ReadNumber(text, &value) && std::isfinite(value) && value >= 0;
}

Status CheckNumber(const Argument& argument) {
  const auto* rule = std::find_if(std::begin(kArgumentRules), std::end(kArgumentRules),
                                  [&](const auto& row) { return row.name == argument.name; });
  if (rule == std::end(kArgumentRules)) return {};
  if (rule->number == Number::kWhole && !IsWhole(argument.value)) {
    return {Fault::kBadText, "argument " + argument.name + ": expected a whole number from 0 to " +
                                 std::to_string(kMaxWholeNumber) + ", found " +
                                 Quoted(argument.value)};
  }
  if (rule->number == Number::kDecimal && !IsDecimal(argument.value)) {
    return {Fault::kBadText, "argument " + argument.name +
                                 ": expected a decimal number not below 0, found " +
                                 Quoted(argument.value)};
  }
  return {};
}

Status CheckArgument(const Argument& argument) {
  const std::string& name = argument.name;
  if (name.empty() || name.size() > kMaxArgumentNameLength ||
      !std::all_of(name.begin(), name.end(), IsNameCharacter)) {
    return {Fault::kBadText, "argument name " + Quoted(name) +
                                 ": expected 1 to 64 letters, digits, '_', '.' or '-'"};
  }
  if (HasControl(argument.value)) {
    return {Fault::kBadText, "argument " + name + ": expected no control characters, found " +
                                 Quoted(argument.value)};
  }
  return CheckNumber(argument);
}

std::string LineName(uint64_t number) { return "data line " + std::to_string(number); }

}  // namespace

Status CheckMachineId(std::string_view id) {
  if (id.size() == kMachineIdLength && std::all_of(id.begin(), id.end(), IsLetterOrDigit)) {
    return {};
  }
  return {Fault::kBadText, "machine ID: expected 17 letters and digits, found " + Quoted(id) +
                               " (" + std::to_string(id.size()) + " bytes)"};
}

Status CheckId(std::string_view what, std::string_view id) {
  if (id.size() > kMaxIdLength) {
    return {Fault::kBadText, std::string(what) + ": expected at most " +
                                 std::to_string(kMaxIdLength) + " bytes, found " +
                                 std::to_string(id.size())};
  }
  if (HasControl(id)) {
    return {Fault::kBadText,
            std::string(what) + ": expected no control characters, found " + Quoted(id)};
  }
  return {};
}

Status CheckArguments(const std::vector<Argument>& arguments) {
  std::unordered_set<std::string_view> names;
  for (const Argument& argument : arguments) {
    if (Status status = CheckArgument(argument); !status.Ok()) return status;
    if (!names.insert(argument.name).second) {
      return {Fault::kBadText, "argument " + argument.name + ": given more than once"};
    }
  }
  return {};
}

Status CheckDataLine(uint64_t number, std::string_view line) {
  if (line.size() > kMaxLineLength) {
    return {Fault::kTooLarge, LineName(number) + ": expected at most " +
                                  std::to_string(kMaxLineLength) + " bytes, found " +
                                  std::to_string(line.size())};
  }
  if (line.size() >= 2 && line[0] == 'F' && IsDigit(line[1])) {
    return {Fault::kBadLine, LineName(number) + " begins with " + Quoted(line.substr(0, 2)) +
                                 ": the printer would take it for a command"};
  }
  for (const auto& [character, name] : {std::pair('\r', "CR"), std::pair('\n', "LF")}) {
    const size_t position = line.find(character);
    if (position == std::string_view::npos) continue;
    return {Fault::kBadLine, LineName(number) + ": expected no line end inside the line, found " +
                                 name + " at byte " + std::to_string(position)};
  }
  return {};
}

std::vector<uint8_t> FrameRecord(std::string_view name, const std::vector<uint8_t>& payload) {
  std::vector<uint8_t> record(kRecordFrameLength);
  std::copy(name.begin(), name.end(), record.begin());
  StoreU32(&record[name.size()], static_cast<uint32_t>(payload.size()));
  record.insert(record.end(), payload.begin(), payload.end());
  return record;
}

std::string FormatArguments(const std::vector<Argument>& arguments) {
  std::string text;
  for (const Argument& argument : arguments) {
    text += argument.name + "=" + argument.value + "\n";
  }
  return text;
}

Status ParseArguments(std::string_view text, std::vector<Argument>* arguments) {
  std::vector<Argument> parsed;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    if (end == std::string_view::npos) {
      return {Fault::kBadText, "arguments: expected LF at the end, found " + Quoted(text)};
    }
    const std::string_view line = text.substr(0, end);
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
      return {Fault::kBadText, "arguments: expected name=value, found " + Quoted(line)};
    }
    parsed.push_back({std::string(line.substr(0, equals)), std::string(line.substr(equals + 1))});
    text.remove_prefix(end + 1);
  }
  if (Status status = CheckArguments(parsed); !status.Ok()) return status;
  *arguments = std::move(parsed);
  return {};
}

}  // namespace NuvFile
