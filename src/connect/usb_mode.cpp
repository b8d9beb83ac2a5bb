#include "connect/usb_mode.h"

#include <limits>

#include "platform/text.h"

namespace Nuv::Connect {

bool UsbMode::EnumerateDevices(std::vector<std::string>& found) {
  const bool searched = connector_->SearchDevices();
  std::vector<std::wstring> paths;
  found.clear();
  for (const std::wstring& path : connector_->GetDevicePaths(paths)) {
    // A name that cannot be shown still holds its place.
    found.push_back(Platform::NarrowPath(path).value_or(std::string()));
  }
  return searched;
}

bool UsbMode::Open(int index) {
  if (index < 0) return false;
  Close();
  isOpen_ = connector_->Open(std::to_wstring(index).c_str());
  return isOpen_;
}

void UsbMode::Close() {
  connector_->Close();
  isOpen_ = false;
}

bool UsbMode::Write(const uint8_t* data, size_t length) {
  if (length > std::numeric_limits<uint32_t>::max()) return false;
  return connector_->Write(data, static_cast<uint32_t>(length), kTransferTimeoutMs) == 0;
}

std::string UsbMode::ReadBlock() {
  // One byte more than is read: a block without a zero byte ends there.
  uint8_t buffer[kReadBytes + 1] = {};
  connector_->Read(buffer, kTransferTimeoutMs);
  return reinterpret_cast<const char*>(buffer);
}

}  // namespace Nuv::Connect
