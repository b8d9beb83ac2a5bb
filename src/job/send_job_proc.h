#ifndef NUV_JOB_SEND_JOB_PROC_H_
#define NUV_JOB_SEND_JOB_PROC_H_

#include <cstdint>
#include <memory>
#include <string>

#include "job/job_context.h"

namespace Nuv::Connect {

// How a family of printers takes a job: the exchange that opens it. The model data that follows is
// streamed in the same way for all.
class ISendJobProc {
 public:
  virtual ~ISendJobProc() = default;

  // Runs the opening exchange and writes the printer's free receive buffer, in bytes, to
  // `freeBuffer`. 0, or the result that ends the job.
  virtual int32_t PrepareJob(uint64_t& freeBuffer) = 0;
};

// The sender for the printers of `machineId`, or null when there is none. The print file is the one
// that is open in the context's library. The context must outlive the sender.
std::unique_ptr<ISendJobProc> CreateSendJobProc(const std::string& machineId,
                                                const JobContext& context);

// Sender of the Zafel Superfine family: state, job opening, free buffer.
class SendJobProcZSF final : public ISendJobProc {
 public:
  explicit SendJobProcZSF(const JobContext& context) : context_(context) {}

  // 1 an exchange failed, 16 the printer has no free buffer.
  int32_t PrepareJob(uint64_t& freeBuffer) override;

 private:
  const JobContext& context_;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_SEND_JOB_PROC_H_
