// Random access to the bytes of a print file.
#ifndef NUVFILE_BYTE_SOURCE_H_
#define NUVFILE_BYTE_SOURCE_H_

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "nuvfile/status.h"

namespace NuvFile {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Thread-safety: none.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  // Size in bytes when the source was opened.
  virtual uint64_t Size() const = 0;

  // Reads exactly `length` bytes at `offset`. On failure (kReadFailed) the content of
  // `buffer` is unspecified; the source stays usable.
  virtual Status ReadAt(uint64_t offset, uint8_t* buffer, size_t length) = 0;
};

// A file on disk. Holds no buffer of its own, so each ReadAt is one seek and one read.
class FileSource final : public ByteSource {
 public:
  // `path`: in the system's narrow encoding. On failure `*source` is left as it was.
  static Status Open(const std::string& path, std::unique_ptr<ByteSource>* source);

  uint64_t Size() const override { return size_; }
  Status ReadAt(uint64_t offset, uint8_t* buffer, size_t length) override;

 private:
  FileSource(FileHandle file, uint64_t size) : file_(std::move(file)), size_(size) {}

  FileHandle file_;
  uint64_t size_;
};

// Bytes in memory, for tests and fuzzing.
class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

  uint64_t Size() const override { return bytes_.size(); }
  Status ReadAt(uint64_t offset, uint8_t* buffer, size_t length) override;

 private:
  std::vector<uint8_t> bytes_;
};

// Reads a file of at most `max_length` bytes whole. A larger one is kTooLarge and is
// not read.
Status ReadWholeFile(const std::string& path, uint64_t maxLength, std::vector<uint8_t>* bytes);

// "No such file or directory" and the like, for the value of errno.
std::string SystemErrorText(int errorNumber);

}  // namespace NuvFile

#endif  // NUVFILE_BYTE_SOURCE_H_
