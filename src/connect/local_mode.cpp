#include "connect/local_mode.h"

namespace Nuv::Connect {
namespace {

// A printer that never ends its line must not hold the caller.
constexpr size_t kMostReplyBytes = size_t{1} << 20;

}  // namespace

std::string LocalMode::ReadReply() {
  lastRead_.clear();
  do {
    const std::string block = ReadBlock();
    if (block.empty()) break;
    lastRead_ += block;
  } while (lastRead_.back() != '\n' && lastRead_.size() < kMostReplyBytes);
  return lastRead_;
}

bool LocalMode::LastRead(std::vector<uint8_t>& data) const {
  data.assign(lastRead_.begin(), lastRead_.end());
  return !data.empty();
}

}  // namespace Nuv::Connect
