#include <windows.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/files.h"

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

HANDLE Handle(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

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

void KeepModuleLoaded() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCWSTR>(&ModuleFolder), &module);
}

// A folder does not open without a flag of its own.
RegularFile::RegularFile(const std::string& path)
    : handle_(reinterpret_cast<intptr_t>(CreateFileA(
          path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))) {
  if (!IsOpen() || GetFileType(Handle(handle_)) == FILE_TYPE_DISK) return;
  CloseHandle(Handle(handle_));
  handle_ = kNone;
}

RegularFile::~RegularFile() {
  if (IsOpen()) CloseHandle(Handle(handle_));
}

int64_t RegularFile::Read(char* buffer, size_t size) {
  DWORD count = 0;
  const auto wanted = static_cast<DWORD>(std::min<size_t>(size, std::numeric_limits<DWORD>::max()));
  return ReadFile(Handle(handle_), buffer, wanted, &count, nullptr) ? int64_t{count} : -1;
}

}  // namespace Nuv::Platform
