#include <windows.h>

#include "platform/environment.h"

namespace Nuv::Platform {

bool IsInEnvironment(const std::string& name) {
  const std::wstring wide(name.begin(), name.end());
  // An empty value has no length either.
  SetLastError(ERROR_SUCCESS);
  return GetEnvironmentVariableW(wide.c_str(), nullptr, 0) != 0 ||
         GetLastError() != ERROR_ENVVAR_NOT_FOUND;
}

}  // namespace Nuv::Platform
