#include <windows.h>

#include <algorithm>
#include <limits>

#include "platform/regular_file.h"

namespace Nuv::Platform {
namespace {

HANDLE Handle(intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

}  // namespace

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
