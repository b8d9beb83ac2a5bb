#include "output_file.h"

#include <cerrno>
#include <utility>
#include <vector>

#include "header.h"

namespace NuvFile {
namespace {

constexpr size_t kBufferSize = size_t{256} * 1024;

int ReplaceFile(const char* from, const char* to) {
#if defined(_WIN32)
  // rename refuses an existing target there.
  std::remove(to);
#endif
  return std::rename(from, to);
}

}  // namespace

OutputFile::~OutputFile() {
  if (path_.empty()) return;
  file_.reset();
  std::remove(path_.c_str());
}

Status OutputFile::Create(const std::string& path) {
  file_.reset(std::fopen(path.c_str(), "w+b"));
  if (!file_) {
    return {Fault::kCannotOpen, "cannot create '" + path + "': " + SystemErrorText(errno)};
  }
  path_ = path;
  std::setvbuf(file_.get(), nullptr, _IOFBF, kBufferSize);
  return {};
}

Status OutputFile::Append(const void* bytes, size_t length) {
  if (length == 0) return {};
  if (std::fwrite(bytes, 1, length, file_.get()) != length) return WriteFault(errno);
  checksum_ = UpdateChecksum(checksum_, bytes, length);
  size_ += length;
  return {};
}

Status OutputFile::AppendFile(OutputFile& other) {
  if (std::fflush(other.file_.get()) != 0) return other.WriteFault(errno);
  std::rewind(other.file_.get());
  std::vector<uint8_t> buffer(kBufferSize);
  for (uint64_t copied = 0; copied < other.size_;) {
    const size_t got = std::fread(buffer.data(), 1, buffer.size(), other.file_.get());
    if (got == 0) {
      return {Fault::kReadFailed, "cannot read back '" + other.path_ + "'"};
    }
    if (Status status = Append(buffer.data(), got); !status.Ok()) return status;
    copied += got;
  }
  return {};
}

Status OutputFile::WriteAtStart(const void* bytes, size_t length) {
  // Not rewind: it writes what is buffered too, and forgets when that fails.
  if (std::fseek(file_.get(), 0, SEEK_SET) != 0 ||
      std::fwrite(bytes, 1, length, file_.get()) != length) {
    return WriteFault(errno);
  }
  return {};
}

Status OutputFile::RenameTo(const std::string& path) {
  // The last bytes reach the system on close, so only its result tells of a full disk.
  if (std::fclose(file_.release()) != 0) return WriteFault(errno);
  if (ReplaceFile(path_.c_str(), path.c_str()) != 0) {
    return {Fault::kWriteFailed,
            "cannot rename '" + path_ + "' to '" + path + "': " + SystemErrorText(errno)};
  }
  path_.clear();
  return {};
}

uint32_t OutputFile::TakeChecksum() { return std::exchange(checksum_, 0); }

Status OutputFile::WriteFault(int errorNumber) const {
  return {Fault::kWriteFailed, "cannot write '" + path_ + "': " + SystemErrorText(errorNumber)};
}

}  // namespace NuvFile
