#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <type_traits>

#include "platform/files.h"

namespace Nuv::Platform {
namespace {

constexpr uint32_t kMaxCodePoint = 0x10FFFF;

bool IsSurrogate(uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

void AppendUtf8(uint32_t code, std::string& out) {
  const auto tail = [&](int shift) { out += static_cast<char>(0x80U | ((code >> shift) & 0x3FU)); };
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0U | (code >> 6));
    tail(0);
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0U | (code >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | (code >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

std::optional<std::string> NarrowPath(const std::wstring& path) {
  std::string narrow;
  narrow.reserve(path.size());
  for (const wchar_t unit : path) {
    const auto code = static_cast<uint32_t>(std::make_unsigned_t<wchar_t>(unit));
    if (code > kMaxCodePoint || IsSurrogate(code)) return std::nullopt;
    AppendUtf8(code, narrow);
  }
  return narrow;
}

std::wstring FileName(const std::wstring& path) { return path.substr(path.find_last_of(L'/') + 1); }

std::string ModuleFolder() {
  Dl_info module{};
  if (dladdr(reinterpret_cast<void*>(&ModuleFolder), &module) == 0) return {};
  const std::string file = module.dli_fname;
  const size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string() : file.substr(0, slash);
}

void KeepModuleLoaded() {
  Dl_info module{};
  if (dladdr(reinterpret_cast<void*>(&ModuleFolder), &module) == 0) return;
  dlopen(module.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// Not blocking: opening a pipe would wait for its writer.
RegularFile::RegularFile(const std::string& path)
    : handle_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {
  struct stat status = {};
  if (!IsOpen()) return;
  if (fstat(static_cast<int>(handle_), &status) == 0 && S_ISREG(status.st_mode)) return;
  close(static_cast<int>(handle_));
  handle_ = kNone;
}

RegularFile::~RegularFile() {
  if (IsOpen()) close(static_cast<int>(handle_));
}

int64_t RegularFile::Read(char* buffer, size_t size) {
  ssize_t count = 0;
  do {
    count = read(static_cast<int>(handle_), buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

}  // namespace Nuv::Platform
