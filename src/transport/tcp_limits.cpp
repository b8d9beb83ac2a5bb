#include "transport/tcp_limits.h"

#include <algorithm>

#include "platform/diagnostics.h"

namespace Nuv::Transport {

using Platform::Deadline;
using std::chrono::milliseconds;

WriteEnd FinishWrite(Platform::Handle socket, int64_t& left, const TcpLimits& limits,
                     const Platform::Waiter& waiter, const std::function<int64_t()>& takeMore) {
  constexpr int64_t kBlockBytes = 65536;
  const Deadline end = waiter.In(limits.stallMs + left * limits.per64KiBMs / kBlockBytes);
  Deadline stalled = waiter.In(limits.stallMs);
  while (left > 0) {
    const Deadline limit = std::min(stalled, end);
    if (waiter.GetClock().Now() >= limit ||
        !waiter.Until(limit, socket, Platform::Readiness::kOutput)) {
      return WriteEnd::kNotTaken;
    }
    const int64_t rest = takeMore();
    if (rest < 0) return WriteEnd::kLost;
    if (rest < left) stalled = waiter.In(limits.stallMs);
    left = rest;
  }
  return WriteEnd::kTaken;
}

bool DiscardLimit::Allows(size_t bytes) {
  if (!end_) end_ = clock_.Now() + milliseconds(limits_.discardMs);
  thrown_ += bytes;
  if (thrown_ < limits_.discardBytes && clock_.Now() < *end_) return true;
  Platform::Diagnostic("the printer sends without a pause: dropped after %zu bytes", thrown_);
  return false;
}

}  // namespace Nuv::Transport
