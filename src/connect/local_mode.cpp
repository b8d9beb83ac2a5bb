#include "connect/local_mode.h"

#include <algorithm>

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;

// A printer that never ends its line must not hold the caller.
constexpr size_t kMostReplyBytes = 65536;
constexpr milliseconds kMostReplyTime(30000);

}  // namespace

std::string LocalMode::ReadReply(Platform::Interrupt* interrupt) {
  const GivenUp givenUp = [&] { return givenUp_ || (interrupt != nullptr && interrupt->raised()); };
  const auto end = clock_.Now() + kMostReplyTime;
  lastRead_.clear();
  while (lastRead_.size() < kMostReplyBytes && clock_.Now() < end) {
    const auto left = std::chrono::ceil<milliseconds>(end - clock_.Now());
    const auto limit = std::min(left, milliseconds(kTransferTimeoutMs));
    const std::string block = ReadBlock(static_cast<int>(limit.count()), givenUp);
    lastRead_ += block;
    if (block.empty() || block.find('\n') != std::string::npos) break;
  }
  return lastRead_;
}

bool LocalMode::LastRead(std::vector<uint8_t>& data) const {
  data.assign(lastRead_.begin(), lastRead_.end());
  return !data.empty();
}

}  // namespace Nuv::Connect
