#include <windows.h>

#include <vector>

#include "platform/module_folder.h"

namespace Nuv::Platform {
namespace {

// The longest path that the system hands out.
constexpr DWORD kMaxPath = 32768;

std::string ToUtf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.c_str(), length, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.c_str(), length, utf8.data(), size, nullptr, nullptr);
  return utf8;
}

}  // namespace

std::string ModuleFolder() {
  HMODULE module = nullptr;
  const DWORD flags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&ModuleFolder), &module)) return {};
  std::vector<wchar_t> path(kMaxPath);
  const DWORD length = GetModuleFileNameW(module, path.data(), kMaxPath);
  const std::wstring file(path.data(), length);
  const size_t slash = file.find_last_of(L"\\/");
  return slash == std::wstring::npos ? std::string() : ToUtf8(file.substr(0, slash));
}

}  // namespace Nuv::Platform
