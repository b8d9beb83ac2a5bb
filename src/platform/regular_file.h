#ifndef NUV_PLATFORM_REGULAR_FILE_H_
#define NUV_PLATFORM_REGULAR_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace Nuv::Platform {

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

#endif  // NUV_PLATFORM_REGULAR_FILE_H_
