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
  return index >= 0 && connector_->Open(std::to_wstring(index).c_str());
}

bool UsbMode::Reopen(bool inJob) {
  // A connection that broke has lost bytes of the job.
  const bool broken = inJob && connector_->Look() == LinkState::kEnded;
  return !broken && connector_->Reopen(inJob);
}

bool UsbMode::DiscardUntilQuiet(int quietMs, int limitMs) {
  return connector_->DiscardUntilQuiet(static_cast<uint32_t>(quietMs),
                                       static_cast<uint32_t>(limitMs));
}

bool UsbMode::Write(const uint8_t* data, size_t length) {
  if (length > std::numeric_limits<uint32_t>::max()) return false;
  return connector_->Write(data, static_cast<uint32_t>(length), kTransferTimeoutMs) == 0;
}

std::string UsbMode::Identity(int index) const {
  return index < 0 ? std::string() : connector_->Identity(static_cast<size_t>(index));
}

std::string UsbMode::ReadBlock(int timeoutMs, const GivenUp& givenUp) {
  // One byte more than is read: a block without a zero byte ends there.
  uint8_t buffer[kReadBytes + 1] = {};
  connector_->ReadUnless(givenUp, buffer, static_cast<uint32_t>(timeoutMs));
  return reinterpret_cast<const char*>(buffer);
}

}  // namespace Nuv::Connect
