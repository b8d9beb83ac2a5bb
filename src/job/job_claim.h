#ifndef NUV_JOB_JOB_CLAIM_H_
#define NUV_JOB_JOB_CLAIM_H_

#include <atomic>

#include "platform/diagnostics.h"

namespace Nuv::Connect {

// The right to run the one job at a time of those that share `running`.
class JobClaim {
 public:
  explicit JobClaim(std::atomic<bool>& running)
      : running_(running), held_(!running.exchange(true)) {
    if (!held_) Platform::Diagnostic("job refused: another one is running");
  }
  ~JobClaim() {
    if (held_) running_ = false;
  }
  JobClaim(const JobClaim&) = delete;
  JobClaim& operator=(const JobClaim&) = delete;

  bool held() const { return held_; }

 private:
  std::atomic<bool>& running_;
  bool held_;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_CLAIM_H_
