#include "job/send_job_proc.h"

#include "command/code_procs.h"
#include "job/job_arguments.h"
#include "job/machine_ids.h"
#include "job/printer_exchange.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int32_t SendJobProcZSF::PrepareJob(uint64_t& freeBuffer) {
  const std::optional<JobOpening> job = OpeningOf(context_.printFiles);
  if (!job) return NUV_FILE_NOT_READABLE;
  const std::optional<std::string> state = QueryState(context_);
  if (!state) return NUV_FAILED;
  F103proc opening(context_.Procs(), *job);
  const int32_t opened = OpenJob(context_, opening, *state);
  if (opened != NUV_OK) return opened;
  freeBuffer = QueryFreeBufferSize(context_, kZafelSuperfineMachineId);
  return freeBuffer != 0 ? NUV_OK : NUV_NO_BUFFER_SPACE;
}

std::unique_ptr<ISendJobProc> CreateSendJobProc(const std::string& machineId, const JobFile& file,
                                                const JobContext& context) {
  switch (FamilyOf(machineId)) {
    case PrinterFamily::kZafelSuperfine:
      return std::make_unique<SendJobProcZSF>(context);
    case PrinterFamily::kBego:
      return std::make_unique<SendJobProcBEGO>(context, file);
    case PrinterFamily::kAndroid:
      return std::make_unique<SendJobProcAndroid>(context, file);
    case PrinterFamily::kUnknown:
      break;
  }
  return nullptr;
}

}  // namespace Nuv::Connect
