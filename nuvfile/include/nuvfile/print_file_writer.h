// Writing of print files.
#ifndef NUVFILE_PRINT_FILE_WRITER_H_
#define NUVFILE_PRINT_FILE_WRITER_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "nuvfile/content.h"
#include "nuvfile/status.h"

namespace NuvFile {

// Everything but the data lines. Only the machine ID must be given.
struct PrintFileContents {
  std::string machineId;
  std::string projectId;
  std::string materialId;
  std::vector<Argument> arguments;  // `layers` is added with the number of lines if missing
  std::vector<uint8_t> aesKey;
  std::vector<uint8_t> l101;
  std::vector<uint8_t> l102;
  std::vector<uint8_t> l103;
  std::vector<uint8_t> preview;
};

// Yields the data lines, without line ends, one per call: true and the line, or false
// at the end. To stop with a fault, sets `*error` and returns false.
// The line's bytes must stay valid until the next call.
using NextLine = std::function<bool(std::string_view* line, Status* error)>;

// The lines of `lines`, which must outlive the result.
NextLine LinesOf(const std::vector<std::string>& lines);

struct WriteSummary {
  uint64_t lineCount = 0;
  uint64_t modelBytes = 0;
  uint64_t fileBytes = 0;
};

// Writes a print file to `path`, in memory that does not grow with the lines. The lines
// go to `path`.partial and their index to `path`.partial-index; when all is written, the
// file gets its name, replacing an older one. After a failure neither temporary file is
// left and an older file at `path` is untouched.
// Fails with kBadText, kBadLine or kTooLarge for refused content, kCannotOpen or
// kWriteFailed for the disk, or the fault set by `next`. `summary` may be null.
Status WritePrintFile(const std::string& path, const PrintFileContents& contents,
                      const NextLine& next, WriteSummary* summary = nullptr);

}  // namespace NuvFile

#endif  // NUVFILE_PRINT_FILE_WRITER_H_
