#include <windows.h>

#include "platform/text.h"

namespace Nuv::Platform {

std::optional<std::string> NarrowPath(const std::wstring& path) {
  if (path.empty()) return std::string();
  const int length = static_cast<int>(path.size());
  // Without best-fit mapping: a look-alike letter would name another file.
  BOOL lost = FALSE;
  const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.c_str(), length, nullptr,
                                       0, nullptr, &lost);
  if (size <= 0 || lost) return std::nullopt;
  std::string narrow(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.c_str(), length, narrow.data(), size,
                      nullptr, &lost);
  if (lost) return std::nullopt;
  return narrow;
}

std::wstring FileName(const std::wstring& path) {
  return path.substr(path.find_last_of(L"/\\:") + 1);
}

}  // namespace Nuv::Platform
