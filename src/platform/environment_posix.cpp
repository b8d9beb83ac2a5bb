#include <cstdlib>

#include "platform/environment.h"

namespace Nuv::Platform {

bool IsInEnvironment(const std::string& name) { return std::getenv(name.c_str()) != nullptr; }

}  // namespace Nuv::Platform
