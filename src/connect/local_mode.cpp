#include "connect/local_mode.h"

namespace Nuv::Connect {
namespace {

// A printer that never ends its line must not hold the caller.
constexpr size_t kMostReplyBytes = 65536;

}  // namespace

std::string LocalMode::ReadReply() {
  lastRead_.clear();
  while (lastRead_.size() < kMostReplyBytes) {
    const std::string block = ReadBlock();
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
