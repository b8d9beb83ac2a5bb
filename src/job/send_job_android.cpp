#include "command/code_procs.h"
#include "job/file_digest.h"
#include "job/job_arguments.h"
#include "job/printer_exchange.h"
#include "job/send_job_proc.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

using Nuv::Platform::Diagnostic;

namespace Nuv::Connect {
namespace {

constexpr char kThumbnailName[] = "Thumbnail.png";

// Appends what `read` reads to `joined`.
template <class Read>
bool Append(Read read, std::vector<uint8_t>& joined) {
  std::vector<uint8_t> record;
  if (!read(record)) return false;
  joined.insert(joined.end(), record.begin(), record.end());
  return true;
}

}  // namespace

bool SendJobProcAndroid::ReadParts(Parts& parts) const {
  IPrintFileLibrary& file = context_.printFiles;
  return file.ReadPreImg(parts.thumbnail) &&
         Append([&](auto& record) { return file.ReadL101(record); }, parts.records) &&
         Append([&](auto& record) { return file.ReadL102(record); }, parts.records) &&
         Append([&](auto& record) { return file.ReadL103(record); }, parts.records);
}

int32_t SendJobProcAndroid::PrepareJob(uint64_t& /*freeBuffer*/) {
  // The name stands in angle brackets on a line.
  if (file_.name.find_first_of("\r\n>") != std::string::npos) {
    Diagnostic("print file %s: a name with a line end or > cannot be sent", file_.path.c_str());
    return NUV_FILE_NOT_READABLE;
  }
  // Before the first exchange: a damaged file then costs the printer nothing.
  Parts parts;
  const std::optional<FileDigest> digest = DigestOf(file_.path);
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!digest || !job || !ReadParts(parts)) return NUV_FILE_NOT_READABLE;

  std::vector<std::string> values;
  const std::optional<std::string> state = QueryState(context_);
  if (!state ||
      F508proc(context_.Procs(), digest->bytes, digest->sha1, file_.name).Process(values) !=
          NUV_OK) {
    return NUV_FAILED;
  }
  const int32_t sent = SendThumbnail(parts.thumbnail);
  if (sent != NUV_OK) return sent;
  F500proc opening(context_.Procs(), *job, file_.name);
  const int32_t opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  return SendBlocks(parts.records, BlockHeader::kNone);
}

int32_t SendJobProcAndroid::SendThumbnail(const std::vector<uint8_t>& thumbnail) const {
  if (thumbnail.empty()) return NUV_OK;
  std::vector<std::string> values;
  F501proc announcement(context_.Procs(), static_cast<uint32_t>(thumbnail.size()), kThumbnailName);
  const int32_t result = announcement.Process(values);
  if (result != NUV_OK) return result;
  // A printer that does not want a thumbnail prints all the same.
  if (announcement.accepted()) return SendBlocks(thumbnail, BlockHeader::kL105);
  Diagnostic("job: the printer refused the thumbnail");
  return NUV_OK;
}

// The query of the transfer confirms them.
int32_t SendJobProcAndroid::SendBlocks(const std::vector<uint8_t>& bytes,
                                       BlockHeader header) const {
  for (BlockStream blocks(bytes, header); !blocks.AtEnd();) {
    if (context_.channel.SendBytes(blocks.Next())) continue;
    Diagnostic("job: a block before the data lines was not written");
    return NUV_WRITE_FAILED;
  }
  return NUV_OK;
}

}  // namespace Nuv::Connect
