#include <optional>
#include <string>
#include <vector>

#include "job/command_text.h"
#include "job/job_claim.h"
#include "job/line_transfer.h"
#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"
#include "platform/text.h"

namespace Nuv::Connect {

int32_t SendGCodeFile(const JobContext& context, const std::wstring& path,
                      NuvJobProgressCallback progress) {
  const JobClaim claim(context.state.jobRunning);
  if (!claim.held()) return NUV_FAILED;
  const LinkClaim link(context, JobKind::kLines);
  const std::optional<std::string> narrow = Platform::NarrowPath(path);
  CommandText text;
  if (!narrow || !text.Read(*narrow)) {
    Platform::Diagnostic(
        "command file %s cannot be read, is no regular file, or is longer than 2 GiB",
        narrow ? narrow->c_str() : "with a path that has no narrow form");
    return NUV_FILE_NOT_READABLE;
  }

  LineTransfer transfer(context, text.total(), progress);
  transfer.Start();
  for (std::vector<uint8_t> line = text.NextLine(); !line.empty(); line = text.NextLine()) {
    for (bool sent = false; !sent;) {
      if (context.callbacks.IsCancelled()) return NUV_OK;
      const int32_t result = transfer.Pass(line, line.size() - kLineEndBytes, sent);
      if (result != NUV_OK) return result;
    }
  }
  return transfer.Finish();
}

}  // namespace Nuv::Connect
