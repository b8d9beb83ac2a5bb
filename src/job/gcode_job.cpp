#include "job/gcode_job.h"

#include <algorithm>
#include <optional>

#include "job/line_transfer.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/files.h"

namespace Nuv::Connect {

bool CommandText::Read(const std::string& path) {
  Platform::RegularFile file(path);
  std::vector<char> chunk(Platform::kFileChunkBytes);
  int64_t count = 0;
  while ((count = file.Read(chunk.data(), chunk.size())) > 0) {
    if (!Add(chunk.data(), static_cast<size_t>(count))) return false;
  }
  EndLine();
  return count == 0 && total_ <= mostBytes_;
}

bool CommandText::Add(const char* text, size_t size) {
  for (const char* const end = text + size; text != end;) {
    const char* const lineEnd = std::find(text, end, '\n');
    // What the line has so far counts too: it may never end. One more for its carriage return.
    const auto open = static_cast<int64_t>(bytes_.size() - lineStart_) + (lineEnd - text);
    if (total_ + open > mostBytes_ + 1) return false;
    bytes_.append(text, lineEnd);
    if (lineEnd == end) break;
    EndLine();
    text = lineEnd + 1;
  }
  return true;
}

// A carriage return before the line feed is part of the line end, whichever system wrote the file.
void CommandText::EndLine() {
  if (bytes_.size() > lineStart_ && bytes_.back() == '\r') bytes_.pop_back();
  if (bytes_.size() == lineStart_) return;
  total_ += static_cast<int64_t>(bytes_.size() - lineStart_);
  bytes_ += '\n';
  lineStart_ = bytes_.size();
}

std::vector<uint8_t> CommandText::NextLine() {
  const size_t end = bytes_.find('\n', next_);
  if (end == std::string::npos) return {};
  std::vector<uint8_t> line;
  line.reserve(end - next_ + kLineEndBytes);
  line.assign(bytes_.data() + next_, bytes_.data() + end);
  line.insert(line.end(), kLineEnd, kLineEnd + kLineEndBytes);
  next_ = end + 1;
  return line;
}

int SendGCodeFile(const JobContext& context, const std::wstring& path,
                  NuvJobProgressCallback progress) {
  const JobClaim claim(context.state.jobRunning);
  if (!claim.Held()) return NUV_FAILED;
  const LinkClaim link(context, JobKind::kLines);
  const std::optional<std::string> narrow = Platform::NarrowPath(path);
  CommandText text;
  if (!narrow || !text.Read(*narrow)) {
    Platform::Diagnostic(
        "command file %s cannot be read, is no regular file, or is longer than 2 GiB",
        narrow ? narrow->c_str() : "with a path that has no narrow form");
    return NUV_FILE_NOT_READABLE;
  }

  LineTransfer transfer(context, text.Total(), progress);
  transfer.Start();
  for (std::vector<uint8_t> line = text.NextLine(); !line.empty(); line = text.NextLine()) {
    for (bool sent = false; !sent;) {
      if (context.host.IsCancelled()) return NUV_OK;
      const int result = transfer.Pass(line, line.size() - kLineEndBytes, sent);
      if (result != NUV_OK) return result;
    }
  }
  return transfer.Finish();
}

}  // namespace Nuv::Connect
