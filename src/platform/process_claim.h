#ifndef NUV_PLATFORM_PROCESS_CLAIM_H_
#define NUV_PLATFORM_PROCESS_CLAIM_H_

#include <cstdint>
#include <string>

namespace Nuv::Platform {

// The right to something of which a process has one, whichever of its libraries asks: two libraries
// have two copies of every static, so the system holds the claim, and ends it with the process.
//
// Thread-safety: safe.
class ProcessClaim {
 public:
  // `name`: of what is claimed, letters and hyphens.
  explicit ProcessClaim(const std::string& name);
  ~ProcessClaim();
  ProcessClaim(const ProcessClaim&) = delete;
  ProcessClaim& operator=(const ProcessClaim&) = delete;

  // False while another claim of the same name is held. Where the system cannot tell, with a
  // diagnostic, it is.
  bool Held() const { return held_; }

 private:
  bool held_ = false;
  intptr_t handle_ = -1;  // of the system
};

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_PROCESS_CLAIM_H_
