#include "command/code_procs.h"
#include "job/job_arguments.h"
#include "job/machine_ids.h"
#include "job/printer_exchange.h"
#include "job/send_job_proc.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

// What stands between the opening exchange and the data lines, in wire order.
struct RawParts {
  std::vector<uint8_t> key;
  std::vector<uint8_t> l102;
  std::vector<uint8_t> l103;
};

bool ReadParts(IPrintFileLibrary& file, RawParts& parts) {
  return file.GetAESkey(parts.key) && file.ReadL102(parts.l102) && file.ReadL103(parts.l103);
}

// The query behind it confirms it.
bool SendPart(IChannel& channel, std::vector<uint8_t>& part, const char* name) {
  if (part.empty() || channel.SendBytes(std::move(part))) return true;
  Platform::Diagnostic("job: %s not written", name);
  return false;
}

}  // namespace

int32_t SendJobProcBEGO::PrepareJob(uint64_t& freeBuffer) {
  // A name with a line end would be a second command.
  if (file_.name.find_first_of("\r\n") != std::string::npos) {
    Platform::Diagnostic("print file %s: a name with a line end cannot be sent",
                         file_.path.c_str());
    return NUV_FILE_NOT_READABLE;
  }
  // Before the first exchange: a damaged file then costs the printer nothing.
  RawParts parts;
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!job || !ReadParts(context_.printFiles, parts)) return NUV_FILE_NOT_READABLE;

  IPrintFileLibrary& file = context_.printFiles;
  std::vector<std::string> values;
  const std::optional<std::string> state = QueryState(context_);
  if (!state || F354proc(context_.Procs()).Process(values) != NUV_OK ||
      F353proc(context_.Procs()).Process(values) != NUV_OK ||
      F367proc(context_.Procs(), file_.name).Process(values) != NUV_OK ||
      F355proc(context_.Procs(), file.GetMaterialID(), file.GetProjectID()).Process(values) !=
          NUV_OK) {
    return NUV_FAILED;
  }
  F103proc opening(context_.Procs(), *job);
  const int32_t opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  if (!SendPart(context_.channel, parts.key, "key") ||
      !SendPart(context_.channel, parts.l102, "record L102") ||
      !SendPart(context_.channel, parts.l103, "record L103")) {
    return NUV_WRITE_FAILED;
  }
  freeBuffer = QueryFreeBufferSize(context_, kBegoMachineId);
  return freeBuffer != 0 ? NUV_OK : NUV_NO_BUFFER_SPACE;
}

}  // namespace Nuv::Connect
