#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "job/job_claim.h"
#include "job/line_transfer.h"
#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/text.h"

using Nuv::Platform::Diagnostic;

namespace Nuv::Connect {
namespace {

// Reads the lines of a command file that are not empty, one at a time.
class CommandFile {
 public:
  explicit CommandFile(const std::string& path) : file_(path) {}

  // False at the end of the file. A carriage return before the line feed is part of the line end,
  // whichever system wrote the file.
  bool NextLine(std::string& line) {
    while (std::getline(file_, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (!line.empty()) return true;
    }
    return false;
  }

  // The bytes of all lines, known before the first goes out; nothing when the file cannot be read
  // or they are more than progress can count.
  std::optional<int32_t> TotalBytes() {
    int64_t total = 0;
    bool tooLong = false;
    for (std::string line; !tooLong && NextLine(line);) {
      total += static_cast<int64_t>(line.size());
      tooLong = total > std::numeric_limits<int32_t>::max();
    }
    if (!file_.eof() || file_.bad()) return std::nullopt;
    file_.clear();
    file_.seekg(0);
    return static_cast<int32_t>(total);
  }

  bool IsOpen() const { return file_.is_open(); }
  bool Failed() const { return file_.bad(); }

 private:
  std::ifstream file_;
};

std::vector<uint8_t> WithLineEnd(const std::string& line) {
  std::vector<uint8_t> bytes(line.begin(), line.end());
  bytes.insert(bytes.end(), kLineEnd, kLineEnd + kLineEndBytes);
  return bytes;
}

}  // namespace

int32_t SendGCodeFile(const JobContext& context, const std::wstring& path,
                      NuvJobProgressCallback progress) {
  const JobClaim claim(context.state);
  if (!claim.held()) return NUV_FAILED;
  const LinkClaim link(context.state);
  const std::optional<std::string> narrow = Platform::NarrowPath(path);
  CommandFile file(narrow.value_or(std::string()));
  const std::optional<int32_t> total = file.IsOpen() ? file.TotalBytes() : std::nullopt;
  if (!total) {
    Diagnostic("command file %s cannot be read, or is longer than 2 GiB",
               narrow ? narrow->c_str() : "with a path that has no narrow form");
    return NUV_FILE_NOT_READABLE;
  }

  LineTransfer transfer(context, *total, progress);
  transfer.Start();
  std::string line;
  while (!transfer.IsComplete() && file.NextLine(line)) {
    for (bool sent = false; !sent;) {
      if (context.callbacks.IsCancelled()) return NUV_OK;
      const int32_t result = transfer.Pass(WithLineEnd(line), line.size(), sent);
      if (result != NUV_OK) return result;
    }
  }
  if (!file.Failed()) return NUV_OK;
  Diagnostic("command file %s cannot be read on", narrow->c_str());
  return NUV_FILE_NOT_READABLE;
}

}  // namespace Nuv::Connect
