#ifndef NUV_JOB_JOB_CLAIM_H_
#define NUV_JOB_JOB_CLAIM_H_

#include "job/job_context.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {

// The right to run the one job at a time: the print-file library holds one open file, and the lines
// of two jobs would mix on the wire.
class JobClaim {
 public:
  explicit JobClaim(JobState& state) : state_(state), held_(!state.jobRunning.exchange(true)) {
    if (!held_) Platform::Diagnostic("job refused: another one is running");
  }
  ~JobClaim() {
    if (held_) state_.jobRunning = false;
  }
  JobClaim(const JobClaim&) = delete;
  JobClaim& operator=(const JobClaim&) = delete;

  bool held() const { return held_; }

 private:
  JobState& state_;
  bool held_;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_CLAIM_H_
