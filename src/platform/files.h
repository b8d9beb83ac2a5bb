// Files: how their paths are written on this system, where the library lies, reading one.
#ifndef NUV_PLATFORM_FILES_H_
#define NUV_PLATFORM_FILES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Nuv::Platform {

// The narrow form of a wide path, as this system's file functions take it: UTF-8 on Linux, whatever
// the locale; the ANSI code page on Windows. Nothing when the path has no such form.
std::optional<std::string> NarrowPath(const std::wstring& path);

// The last part of a path, without its folders.
std::wstring FileName(const std::wstring& path);

// The folder of the file that this code was loaded from (the library, or a program it is linked
// into), without a final separator; empty when the system does not tell. UTF-8.
std::string ModuleFolder();

// The file that this code was loaded from stays loaded until the program ends, whoever unloads it.
void KeepModuleLoaded();

// How much who reads a whole file reads at once.
constexpr size_t kFileChunkBytes = size_t{64} * 1024;

// A file on disk, open for reading beside other programs. What could keep its reader waiting (a
// pipe, a terminal, another device) does not open.
//
// Thread-safety: none.
class RegularFile {
 public:
  // `path`: narrow, as NarrowPath makes it.
  explicit RegularFile(const std::string& path);
  ~RegularFile();
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  bool IsOpen() const { return handle_ != kNone; }

  // Reads at most `size` bytes. How many; 0 at the end, below 0 when it failed.
  int64_t Read(char* buffer, size_t size);

 private:
  static constexpr intptr_t kNone = -1;

  intptr_t handle_ = kNone;  // of the system
};

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_FILES_H_
