#ifndef NUV_PLATFORM_ENVIRONMENT_H_
#define NUV_PLATFORM_ENVIRONMENT_H_

#include <optional>
#include <string>

namespace Nuv::Platform {

// The value of a variable of this process's environment; nothing when it is not there. On Windows
// the process's own, which also a host with another C run-time library sets; what is not ASCII is
// "?" there. `name`: ASCII.
std::optional<std::string> Environment(const std::string& name);

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_ENVIRONMENT_H_
