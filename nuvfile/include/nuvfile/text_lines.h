// Lines of a text file, one at a time.
#ifndef NUVFILE_TEXT_LINES_H_
#define NUVFILE_TEXT_LINES_H_

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvfile/byte_source.h"
#include "nuvfile/status.h"

namespace NuvFile {

// Lines end with LF or CR LF; the last line may lack its end. Memory: one line, at most
// 16 MiB, and a fixed buffer.
//
// Thread-safety: none.
class TextLines {
 public:
  // `path`: a file, or "-" for standard input. On failure `*lines` is left as it was.
  static Status Open(const std::string& path, std::unique_ptr<TextLines>* lines);

  // True and the next line, valid until the next call; false at the end or on a fault,
  // which is then in `*error`: kReadFailed, kTooLarge for an overlong line, or kBadText
  // for a byte-order mark, which would reach the printer as part of the first line.
  bool Next(std::string_view* line, Status* error);

 private:
  explicit TextLines(FileHandle owned, std::FILE* file);
  bool Refill(Status* error);
  bool TakeLine(Status* error);

  FileHandle owned_;  // empty for standard input
  std::FILE* file_;
  std::vector<char> buffer_;
  size_t begin_ = 0;
  size_t end_ = 0;
  uint64_t lineNumber_ = 0;
  std::string line_;
};

}  // namespace NuvFile

#endif  // NUVFILE_TEXT_LINES_H_
