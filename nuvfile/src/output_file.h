// A file being written, which disappears unless it is kept.
#ifndef NUVFILE_SRC_OUTPUT_FILE_H_
#define NUVFILE_SRC_OUTPUT_FILE_H_

#include <cstdint>
#include <string>

#include "nuvfile/byte_source.h"
#include "nuvfile/status.h"

namespace NuvFile {

// Thread-safety: none.
class OutputFile {
 public:
  OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // Deletes the file unless RenameTo succeeded.
  ~OutputFile();

  // Creates `path`, or empties it, for writing and reading.
  Status Create(const std::string& path);

  // Appends bytes and adds them to the running checksum.
  Status Append(const void* bytes, size_t length);

  // Appends all that `other` holds, from its start.
  Status AppendFile(OutputFile& other);

  // Overwrites bytes at the start of the file; no Append may follow.
  Status WriteAtStart(const void* bytes, size_t length);

  // Closes the file and gives it its name, replacing an older file of that name.
  Status RenameTo(const std::string& path);

  // Bytes appended so far.
  uint64_t Size() const { return size_; }
  // CRC-32 of the bytes appended since the last call.
  uint32_t TakeChecksum();

 private:
  Status WriteFault(int errorNumber) const;

  std::string path_;
  FileHandle file_;
  uint64_t size_ = 0;
  uint32_t checksum_ = 0;
};

}  // namespace NuvFile

#endif  // NUVFILE_SRC_OUTPUT_FILE_H_
