#include "transport/search_bounds.h"

#include <algorithm>

#include "platform/diagnostics.h"

namespace Nuv::Transport {

using Platform::Diagnostic;
using std::chrono::milliseconds;

milliseconds SearchBounds::Longest(int timeoutMs) {
  constexpr int kTimeLimits = 10;
  constexpr milliseconds kAtLeast = std::chrono::seconds(30);
  return std::max(milliseconds(timeoutMs) * kTimeLimits, kAtLeast);
}

SearchBounds::SearchBounds(std::string network, int timeoutMs, Platform::Clock& clock)
    : network_(std::move(network)),
      timeoutMs_(timeoutMs),
      clock_(clock),
      end_(clock.Now() + Longest(timeoutMs)) {}

int SearchBounds::WaitMs() const {
  const auto left = std::chrono::duration_cast<milliseconds>(end_ - clock_.Now());
  if (left.count() > 0) return static_cast<int>(std::min(left, milliseconds(timeoutMs_)).count());
  Diagnostic("search on %s: still answers after %lld s, the rest is dropped", network_.c_str(),
             static_cast<long long>(Longest(timeoutMs_) / std::chrono::seconds(1)));
  return 0;
}

bool SearchBounds::Takes(size_t bytes) {
  ++answers_;
  bytes_ += bytes;
  if (answers_ <= kMostAnswers && bytes_ <= kMostBytes) return true;
  Diagnostic("search on %s: more than %zu answers or %zu bytes, the rest is dropped",
             network_.c_str(), kMostAnswers, kMostBytes);
  return false;
}

}  // namespace Nuv::Transport
