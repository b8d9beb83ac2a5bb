#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/regular_file.h"

namespace Nuv::Platform {

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
