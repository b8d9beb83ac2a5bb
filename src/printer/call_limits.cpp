#include "printer/call_limits.h"

#include <algorithm>

#include "printer/host_call.h"
#include "printer/values.h"

namespace Nuv::Printer {

using std::chrono::milliseconds;

namespace {

constexpr milliseconds kAskingInterval(100);

}  // namespace

CallLimits::CallLimits(const nuv_call* call, int usualMs, const Platform::Clock& clock)
    : clock_(clock), end_(Platform::Deadline::max()) {
  const nuv_call given = Given(call);
  if (given.time_limit_ms < 0) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a time limit below 0"};
  }
  const int limitMs = given.time_limit_ms != 0 ? given.time_limit_ms : usualMs;
  if (limitMs != 0) end_ = clock.Now() + milliseconds(limitMs);
  stillWanted_ = given.still_wanted;
  user_ = given.user;
}

milliseconds CallLimits::Patience() const {
  const auto left = std::chrono::ceil<milliseconds>(end_ - clock_.Now());
  return std::clamp(
      left, milliseconds(1),
      stillWanted_ != nullptr ? kAskingInterval : milliseconds(std::chrono::hours(1)));
}

bool CallLimits::Cancelled() const {
  if (stillWanted_ != nullptr && !unwanted_ && clock_.Now() >= askAgain_) {
    askAgain_ = clock_.Now() + kAskingInterval;
    const HostCall call;
    unwanted_ = stillWanted_(user_) != 1;
  }
  return unwanted_ || Interrupt::Raised();
}

}  // namespace Nuv::Printer
