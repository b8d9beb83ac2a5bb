#include "connect/local_link.h"

namespace Nuv::Connect {

LocalLink::LocalLink(std::string identification, int searchPort, int replyPort)
    : identification_(std::move(identification)), searchPort_(searchPort), replyPort_(replyPort) {}

bool LocalLink::SearchDevices(std::vector<std::string>& /*found*/, const std::string& /*address*/,
                              const std::string& /*netmask*/, int /*timeoutMs*/) {
  return false;
}

bool LocalLink::EnumerateDevices(std::vector<std::string>& found) {
  found.clear();
  return true;
}

bool LocalLink::Open(int /*index*/) { return false; }

void LocalLink::Close() {}

bool LocalLink::Write(const uint8_t* /*data*/, size_t /*length*/) { return false; }

std::string LocalLink::ReadReply() { return {}; }

bool LocalLink::LastRead(std::vector<uint8_t>& /*data*/) const { return false; }

}  // namespace Nuv::Connect
