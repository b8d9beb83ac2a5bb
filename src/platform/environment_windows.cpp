#include <windows.h>

#include "platform/environment.h"

namespace Nuv::Platform {

std::optional<std::string> Environment(const std::string& name) {
  const std::wstring wide(name.begin(), name.end());
  // With its NUL. An empty value has no length either.
  SetLastError(ERROR_SUCCESS);
  const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
  if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
  std::wstring value(size, L'\0');
  value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), size));
  std::string text;
  for (const wchar_t each : value) text += each < 0x80 ? static_cast<char>(each) : '?';
  return text;
}

}  // namespace Nuv::Platform
