#include "transport/tcp_limits.h"

#include <algorithm>

#include "platform/diagnostics.h"

using std::chrono::milliseconds;
using std::chrono::steady_clock;

WriteEnd FinishWrite(SocketSystem::Handle socket, int64_t& left, const TcpLimits& limits,
                     const std::function<int64_t()>& takeMore) {
  constexpr int64_t kBlockBytes = 65536;
  const milliseconds stall(limits.stallMs);
  const steady_clock::time_point start = steady_clock::now();
  const steady_clock::time_point end =
      start + stall + milliseconds(left * limits.per64KiBMs / kBlockBytes);
  steady_clock::time_point stalled = start + stall;
  while (left > 0) {
    const auto wait = std::chrono::duration_cast<std::chrono::microseconds>(std::min(stalled, end) -
                                                                            steady_clock::now());
    if (wait.count() <= 0 || !SocketSystem::WaitWritable(socket, wait.count())) {
      return stalled <= end ? WriteEnd::kStalled : WriteEnd::kSlow;
    }
    const int64_t rest = takeMore();
    if (rest < 0) return WriteEnd::kLost;
    if (rest < left) stalled = steady_clock::now() + stall;
    left = rest;
  }
  return WriteEnd::kTaken;
}

bool DiscardLimit::Allows(size_t bytes) {
  const steady_clock::time_point now = steady_clock::now();
  if (!end_) end_ = now + milliseconds(limits_.discardMs);
  thrown_ += bytes;
  if (thrown_ < limits_.discardBytes && now < *end_) return true;
  Nuv::Platform::Diagnostic("the printer sends without a pause: dropped after %zu bytes", thrown_);
  return false;
}
