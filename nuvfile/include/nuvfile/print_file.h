// An open, verified print file.
#ifndef NUVFILE_PRINT_FILE_H_
#define NUVFILE_PRINT_FILE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "nuvfile/byte_source.h"
#include "nuvfile/content.h"
#include "nuvfile/sections.h"
#include "nuvfile/status.h"

namespace NuvFile {

// Thread-safety: none.
// Memory: the texts (at most 1 MiB of arguments and three short IDs); neither the index
// nor the data lines are held.
class PrintFile {
 public:
  // Verifies the whole of `source` and yields the file. On failure `*file` is left as
  // it was, and the status names the part at fault.
  static Status Open(std::unique_ptr<ByteSource> source, std::unique_ptr<PrintFile>* file);
  static Status Open(const std::string& path, std::unique_ptr<PrintFile>* file);

  const std::string& MachineId() const { return machineId_; }
  const std::string& ProjectId() const { return projectId_; }
  const std::string& MaterialId() const { return materialId_; }
  const std::string& ArgumentsText() const { return argumentsText_; }
  const std::vector<Argument>& Arguments() const { return arguments_; }
  uint64_t LineCount() const { return layout_.lineCount; }
  // Bytes of all data lines, without line ends; at most kMaxModelBytes.
  uint64_t ModelBytes() const { return SectionLength(Section::kData); }
  uint64_t FileBytes() const { return layout_.fileSize; }
  uint64_t SectionLength(Section section) const { return layout_.At(section).length; }

  // Length of data line `index` (from 0) into `*length`; its bytes into `buffer` when
  // they fit into `capacity`. Two reads of the source, whatever the index.
  // Fails with kLineOutOfRange, kReadFailed, or kBadIndex and kBadLine when the file has
  // been changed since it was opened.
  Status ReadLine(uint64_t index, uint8_t* buffer, size_t capacity, size_t* length);

  // The bytes of a section other than data and index, by the same rule. Checks the
  // checksum again: kBadChecksum when the file has been changed since it was opened.
  Status ReadSection(Section section, uint8_t* buffer, size_t capacity, size_t* length);

 private:
  PrintFile(std::unique_ptr<ByteSource> source, const Layout& layout)
      : source_(std::move(source)), layout_(layout) {}
  Status LoadTexts();

  std::unique_ptr<ByteSource> source_;
  Layout layout_;
  std::string machineId_;
  std::string projectId_;
  std::string materialId_;
  std::string argumentsText_;
  std::vector<Argument> arguments_;
};

}  // namespace NuvFile

#endif  // NUVFILE_PRINT_FILE_H_
