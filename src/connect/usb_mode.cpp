#include "connect/usb_mode.h"

#include <limits>

#include "platform/text.h"

namespace Nuv::Connect {
namespace {

constexpr uint32_t kTransferMs = 3000;
// A printer that sends no line feed must not be read from for ever.
constexpr size_t kMaxReplyBytes = 65536;

}  // namespace

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
  lastRead_.clear();
  isOpen_ = false;
}

bool UsbMode::Write(const uint8_t* data, size_t length) {
  if (length > std::numeric_limits<uint32_t>::max()) return false;
  return connector_->Write(data, static_cast<uint32_t>(length), kTransferMs) == 0;
}

std::string UsbMode::ReadReply() {
  std::string reply;
  while (reply.size() < kMaxReplyBytes) {
    const std::string block = ReadBlock();
    reply += block;
    if (block.empty() || block.find('\n') != std::string::npos) break;
  }
  lastRead_.assign(reply.begin(), reply.end());
  return reply;
}

std::string UsbMode::ReadBlock() {
  // One byte more than is read: a block without a zero byte ends there.
  uint8_t buffer[kReadBytes + 1] = {};
  connector_->Read(buffer, kTransferMs);
  return reinterpret_cast<const char*>(buffer);
}

bool UsbMode::LastRead(std::vector<uint8_t>& data) const {
  if (lastRead_.empty()) return false;
  data = lastRead_;
  return true;
}

}  // namespace Nuv::Connect
