#include <cstdlib>

#include "platform/environment.h"

namespace Nuv::Platform {

std::optional<std::string> Environment(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

}  // namespace Nuv::Platform
