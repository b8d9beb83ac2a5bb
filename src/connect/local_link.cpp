#include "connect/local_link.h"

namespace Nuv::Connect {

LocalLink::LocalLink(std::string identification, int searchPort, int replyPort,
                     std::unique_ptr<ConnectorBase> usb)
    : usb_(std::move(usb)),
      identification_(std::move(identification)),
      searchPort_(searchPort),
      replyPort_(replyPort) {}

bool LocalLink::SearchDevices(std::vector<std::string>& /*found*/, const std::string& /*address*/,
                              const std::string& /*netmask*/, int /*timeoutMs*/) {
  return false;
}

bool LocalLink::EnumerateDevices(std::vector<std::string>& found) {
  return usb_.EnumerateDevices(found);
}

bool LocalLink::Open(int index) { return mode_ == kUsb && usb_.Open(index); }

void LocalLink::Close() { usb_.Close(); }

bool LocalLink::Write(const uint8_t* data, size_t length) {
  return mode_ == kUsb && usb_.Write(data, length);
}

std::string LocalLink::ReadReply() { return mode_ == kUsb ? usb_.ReadReply() : std::string(); }

bool LocalLink::LastRead(std::vector<uint8_t>& data) const { return usb_.LastRead(data); }

}  // namespace Nuv::Connect
