#include "nuvsim/faults/vocabulary.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>

#include "nuvsim/json_object.h"

namespace NuvSim {
namespace {

// One word of the vocabulary. A null option name means that the kind does not take the option.
struct FaultRow {
  FaultKind kind;
  const char* name;
  const char* sizeOption;
  uint64_t size;  // default
  bool takesDelay;
  int delayMs;  // default
  bool takesField;
  const char* text;  // default; null: takes no text
};

// clang-format off
constexpr FaultRow kRows[] = {
    // kind                   name           size     default  delay  ms    field  text
    {FaultKind::kSilent,      "silent",      nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kLate,        "late",        nullptr, 0,       true,  1000, false, nullptr},
    {FaultKind::kPieces,      "pieces",      "bytes", 1,       true,  10,   false, nullptr},
    {FaultKind::kOtherCode,   "other-code",  nullptr, 0,       false, 0,    false, "F999"},
    {FaultKind::kAnswer,      "answer",      nullptr, 0,       false, 0,    false, ""},
    {FaultKind::kRefuse,      "refuse",      nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kGarbage,     "garbage",     "bytes", 64,      false, 0,    false, nullptr},
    {FaultKind::kBadNumber,   "bad-number",  nullptr, 0,       false, 0,    true,  "abc"},
    {FaultKind::kTwice,       "twice",       nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kOversized,   "oversized",   "kib",   1024,    false, 0,    false, nullptr},
    {FaultKind::kZeroPacket,  "zero-packet", nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kEndless,     "endless",     "bytes", 1024,    true,  0,    false, ""},
    {FaultKind::kDrop,        "drop",        nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kReset,       "reset",       nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kDropAfter,   "drop-after",  "bytes", 1,       false, 0,    false, nullptr},
    {FaultKind::kResetAfter,  "reset-after", "bytes", 1,       false, 0,    false, nullptr},
    {FaultKind::kGoneAfter,   "gone-after",  "bytes", 1,       false, 0,    false, nullptr},
    {FaultKind::kStall,       "stall",       "bytes", 1,       true,  0,    false, nullptr},
    {FaultKind::kNak,         "nak",         nullptr, 0,       true,  0,    false, nullptr},
    {FaultKind::kBufferFull,  "buffer-full", nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kEcho,        "echo",        nullptr, 0,       false, 0,    false, nullptr},
    {FaultKind::kDuplicate,   "duplicate",   "n",     1,       true,  0,    false, nullptr},
    {FaultKind::kMalformed,   "malformed",   nullptr, 0,       false, 0,    false, ""},
    {FaultKind::kForeign,     "foreign",     nullptr, 0,       false, 0,    false, ""},
    {FaultKind::kBadPort,     "bad-port",    nullptr, 0,       false, 0,    false, "abc"},
    {FaultKind::kBurst,       "burst",       "n",     100,     true,  0,    false, nullptr},
};
// clang-format on

// Largest sizes: a count of bytes may be as long as a job; KiB and datagrams are held in memory.
constexpr int64_t kMaxBytes = int64_t{1} << 40;
constexpr int64_t kMaxAnswerBytes = 65536;
constexpr int64_t kMaxKib = 65536;
constexpr int64_t kMaxDatagrams = 100000;
constexpr int64_t kMaxDelayMs = 3600000;
constexpr int64_t kMaxInt = std::numeric_limits<int>::max();

FaultRow RowOf(FaultKind kind) {
  return *std::find_if(std::begin(kRows), std::end(kRows),
                       [kind](const FaultRow& row) { return row.kind == kind; });
}

FaultRow RowOf(const std::string& name, const std::string& path) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                 [&name](const FaultRow& each) { return name == each.name; });
  if (row != std::end(kRows)) return *row;
  std::string names;
  for (const FaultRow& each : kRows) names += std::string(" ") + each.name;
  throw ConfigError(path + ": unknown fault '" + name + "'; known:" + names);
}

int64_t MaxSize(const FaultRow& row) {
  const std::string_view option = row.sizeOption;
  if (option == "kib") return kMaxKib;
  if (option == "n") return kMaxDatagrams;
  const bool isText = row.kind == FaultKind::kGarbage || row.kind == FaultKind::kEndless;
  return isText ? kMaxAnswerBytes : kMaxBytes;
}

}  // namespace

Fault MakeFault(FaultKind kind, int code, int count) {
  const FaultRow row = RowOf(kind);
  Fault fault;
  fault.kind = kind;
  fault.code = code;
  fault.count = count;
  fault.delay = std::chrono::milliseconds(row.delayMs);
  fault.size = row.size;
  fault.text = row.text == nullptr ? "" : row.text;
  return fault;
}

const char* FaultName(FaultKind kind) { return RowOf(kind).name; }

Fault ParseFault(JsonObject& object) {
  std::string name;
  object.Read("kind", name);
  const FaultRow row = RowOf(name, object.PathOf("kind"));
  Fault fault = MakeFault(row.kind);
  object.ReadInteger("code", 0, kMaxInt, fault.code);
  object.ReadInteger("count", -1, kMaxInt, fault.count);
  object.ReadInteger("skip", 0, kMaxInt, fault.skip);
  if (row.sizeOption != nullptr) object.ReadInteger(row.sizeOption, 1, MaxSize(row), fault.size);
  if (row.takesDelay) {
    int64_t delayMs = row.delayMs;
    object.ReadInteger("ms", 0, kMaxDelayMs, delayMs);
    fault.delay = std::chrono::milliseconds(delayMs);
  }
  if (row.takesField) {
    object.Read("field", fault.field);
    if (fault.field.empty()) throw ConfigError(object.Path() + ": " + name + " needs a field");
  }
  if (row.text != nullptr) object.Read("text", fault.text);
  object.RefuseOthers();
  return fault;
}

Fault ParseFault(const std::string& words) {
  const std::string path = "fault '" + words + "'";
  nlohmann::json keys = nlohmann::json::object();
  size_t start = 0;
  while (start <= words.size()) {
    const size_t end = std::min(words.find(',', start), words.size());
    const std::string part = words.substr(start, end - start);
    start = end + 1;
    if (keys.empty()) {
      keys["kind"] = part;
      continue;
    }
    const size_t equals = part.find('=');
    if (equals == std::string::npos) {
      throw ConfigError(path + ": '" + part + "' is not key=value");
    }
    const std::string key = part.substr(0, equals);
    const std::string value = part.substr(equals + 1);
    if (keys.contains(key)) throw ConfigError(path + ": " + key + " is given twice");
    int64_t number = 0;
    const char* const last = value.data() + value.size();
    const auto parsed = std::from_chars(value.data(), last, number);
    const bool isText = key == "field" || key == "text";
    if (!isText && parsed.ec == std::errc() && parsed.ptr == last && !value.empty()) {
      keys[key] = number;
    } else {
      keys[key] = value;
    }
  }
  JsonObject object(keys, path);
  return ParseFault(object);
}

}  // namespace NuvSim
