#include "job/send_job_proc.h"

#include "command/code_procs.h"
#include "job/free_buffer.h"
#include "job/job_arguments.h"
#include "job/machine_ids.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int32_t SendJobProcZSF::PrepareJob(uint64_t& freeBuffer) {
  const ProcContext procs{context_.channel, context_.MakeErrorCallback(), context_.clock};
  std::vector<std::string> values;
  if (F102proc(procs).Process(values) != NUV_OK) return NUV_FAILED;
  JobOpening job = ReadJobArguments(context_.printFiles.GetFileArguments());
  job.dataBytes = context_.printFiles.GetModelDataSize();
  if (F103proc(procs, job).Process(values) != NUV_OK) return NUV_FAILED;
  freeBuffer = QueryFreeBufferSize(context_, kZafelSuperfineMachineId);
  return freeBuffer != 0 ? NUV_OK : NUV_NO_BUFFER_SPACE;
}

std::unique_ptr<ISendJobProc> CreateSendJobProc(const std::string& machineId,
                                                const JobContext& context) {
  if (FamilyOf(machineId) == PrinterFamily::kZafelSuperfine) {
    return std::make_unique<SendJobProcZSF>(context);
  }
  return nullptr;
}

}  // namespace Nuv::Connect
