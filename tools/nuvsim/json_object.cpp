#include "nuvsim/json_object.h"

#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

namespace NuvSim {

using nlohmann::json;

json ParseJson(const std::string& text, const std::string& what) {
  try {
    return json::parse(text);
  } catch (const json::exception& error) {
    throw ConfigError(what + ": not valid JSON: " + error.what());
  }
}

JsonObject::JsonObject(const json& value, std::string path)
    : value_(value), path_(std::move(path)) {
  if (!value_.is_object()) throw ConfigError(path_ + ": must be an object");
}

std::string JsonObject::PathOf(const std::string& key) const { return path_ + "." + key; }

bool JsonObject::Has(const char* key) const { return value_.contains(key); }

const json* JsonObject::Find(const char* key) {
  known_.insert(key);
  const auto found = value_.find(key);
  return found == value_.end() ? nullptr : &*found;
}

void JsonObject::Read(const char* key, std::string& out) {
  const json* value = Find(key);
  if (value == nullptr) return;
  if (!value->is_string()) throw ConfigError(PathOf(key) + ": must be a text");
  out = value->get<std::string>();
}

void JsonObject::Read(const char* key, bool& out) {
  const json* value = Find(key);
  if (value == nullptr) return;
  if (!value->is_boolean()) throw ConfigError(PathOf(key) + ": must be true or false");
  out = value->get<bool>();
}

void JsonObject::ReadInteger(const char* key, int64_t low, int64_t high, int64_t& out) {
  const json* value = Find(key);
  if (value == nullptr) return;
  bool fits = value->is_number_integer();
  if (value->is_number_unsigned() &&
      value->get<uint64_t>() > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
    fits = false;
  }
  const int64_t number = fits ? value->get<int64_t>() : 0;
  if (!fits || number < low || number > high) {
    throw ConfigError(PathOf(key) + ": must be a whole number from " + std::to_string(low) +
                      " to " + std::to_string(high));
  }
  out = number;
}

void JsonObject::RefuseOthers() const {
  for (const auto& item : value_.items()) {
    if (known_.count(item.key()) == 0) throw ConfigError(PathOf(item.key()) + ": unknown key");
  }
}

}  // namespace NuvSim
