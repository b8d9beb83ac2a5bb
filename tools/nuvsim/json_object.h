// Strict reading of one JSON object: wrong types, out-of-range numbers and unknown keys are
// refused with a message that names the place.
//
// Thread-safety: none.
#ifndef NUVSIM_JSON_OBJECT_H_
#define NUVSIM_JSON_OBJECT_H_

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <stdexcept>
#include <string>

namespace NuvSim {

// What a user has written - a file, an option, a request - and what cannot be used; what() names
// the place and what is wrong there.
class ConfigError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// Parses `text`; throws ConfigError("<what>: not valid JSON: ...").
nlohmann::json ParseJson(const std::string& text, const std::string& what);

class JsonObject {
 public:
  // `path` names the object in messages ("printers[0]"); `value` must outlive this object.
  // Throws ConfigError when `value` is no object.
  JsonObject(const nlohmann::json& value, std::string path);

  bool Has(const char* key) const;

  // Each reads a key into `out` and leaves `out` alone when the key is absent.
  // Throws ConfigError when the value has another type or lies outside [low, high].
  void Read(const char* key, std::string& out);
  void Read(const char* key, bool& out);
  void ReadInteger(const char* key, int64_t low, int64_t high, int64_t& out);
  template <typename Integer>
  void ReadInteger(const char* key, int64_t low, int64_t high, Integer& out) {
    auto wide = static_cast<int64_t>(out);
    ReadInteger(key, low, high, wide);
    out = static_cast<Integer>(wide);
  }

  // The value of a key, or null when it is absent.
  const nlohmann::json* Find(const char* key);

  // Throws ConfigError when the object holds a key that was never asked for.
  void RefuseOthers() const;

  const std::string& Path() const { return path_; }
  std::string PathOf(const std::string& key) const;

 private:
  const nlohmann::json& value_;
  std::string path_;
  std::set<std::string> known_;
};

}  // namespace NuvSim

#endif  // NUVSIM_JSON_OBJECT_H_
