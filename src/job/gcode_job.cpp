#include <fstream>
#include <limits>
#include <optional>
#include <queue>
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

struct CommandText {
  std::queue<std::string> lines;  // none empty, without line ends
  int32_t total = 0;              // bytes of all lines
};

// Reads the whole file, so that the total is known before the first line goes out. A carriage
// return before a line feed is part of the line end, whichever system wrote the file.
std::optional<CommandText> ReadCommandText(const std::string& path) {
  std::ifstream file(path);
  if (!file.is_open()) {
    Diagnostic("command file %s cannot be opened", path.c_str());
    return std::nullopt;
  }
  CommandText text;
  int64_t total = 0;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    total += static_cast<int64_t>(line.size());
    text.lines.push(std::move(line));
  }
  if (file.bad() || total > std::numeric_limits<int32_t>::max()) {
    Diagnostic("command file %s cannot be read, or is longer than 2 GiB", path.c_str());
    return std::nullopt;
  }
  text.total = static_cast<int32_t>(total);
  return text;
}

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
  std::optional<CommandText> text;
  if (narrow) text = ReadCommandText(*narrow);
  if (!text) return NUV_FILE_NOT_READABLE;

  LineTransfer transfer(context, text->total, progress);
  transfer.Start();
  while (!text->lines.empty() && !transfer.IsComplete()) {
    if (context.callbacks.IsCancelled()) return NUV_OK;
    const std::string& line = text->lines.front();
    bool sent = false;
    const int32_t result = transfer.Pass(WithLineEnd(line), line.size(), sent);
    if (result != NUV_OK) return result;
    if (sent) text->lines.pop();
  }
  return NUV_OK;
}

}  // namespace Nuv::Connect
