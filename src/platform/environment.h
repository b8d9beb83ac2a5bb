#ifndef NUV_PLATFORM_ENVIRONMENT_H_
#define NUV_PLATFORM_ENVIRONMENT_H_

#include <string>

namespace Nuv::Platform {

// Whether the environment of this process has the variable, with whatever value. On Windows the
// process's own, which also a host with another C run-time library sets. `name`: ASCII.
bool IsInEnvironment(const std::string& name);

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_ENVIRONMENT_H_
