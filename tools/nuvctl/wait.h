// Waiting for the printer to come to a state.
#ifndef NUVCTL_WAIT_H_
#define NUVCTL_WAIT_H_

#include "system.h"

namespace nuvctl {

// Calls `settled` every half second until it is true, `attempts` times at most; false when it never
// was.
template <typename Settled>
bool WaitFor(System& system, int attempts, Settled settled) {
  constexpr int64_t kPauseMs = 500;
  for (int attempt = 1; attempt <= attempts; ++attempt) {
    if (settled()) return true;
    if (attempt < attempts) system.SleepMs(kPauseMs);
  }
  return false;
}

}  // namespace nuvctl

#endif  // NUVCTL_WAIT_H_
