#ifndef NUV_JOB_GCODE_JOB_H_
#define NUV_JOB_GCODE_JOB_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "job/job_context.h"

namespace Nuv::Connect {

// The lines of a command file that are not empty, in one block of bytes. Whatever becomes of the
// file while they are sent, the printer gets what was there at the start.
class CommandText {
 public:
  // `mostBytes`: of all lines without their line ends; progress counts no further.
  explicit CommandText(int64_t mostBytes = std::numeric_limits<int>::max())
      : mostBytes_(mostBytes) {}

  // Reads the file through, once. False when it is no regular file or cannot be read, and as soon
  // as it holds more than `mostBytes`.
  bool Read(const std::string& path);

  // The bytes of all lines.
  int Total() const { return static_cast<int>(total_); }

  // The next line as it goes out, line end included; empty behind the last.
  std::vector<uint8_t> NextLine();

 private:
  bool Add(const char* text, size_t size);
  void EndLine();

  const int64_t mostBytes_;
  int64_t total_ = 0;
  std::string bytes_;  // each line with a line feed behind it
  size_t lineStart_ = 0;
  size_t next_ = 0;
};

// Sends a text file of printer commands line by line. Results as at API_SendGCodeFile.
int SendGCodeFile(const JobContext& context, const std::wstring& path,
                  NuvJobProgressCallback progress);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_GCODE_JOB_H_
