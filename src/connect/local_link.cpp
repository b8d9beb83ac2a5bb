#include "connect/local_link.h"

#include <algorithm>
#include <array>
#include <limits>

#include "connect/search_settings.h"
#include "platform/diagnostics.h"
#include "platform/files.h"
#include "transport/addresses.h"
#include "transport/udp_search_socket.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;

// A printer that never ends its line must not hold the caller.
constexpr size_t kMostReplyBytes = 65536;
constexpr int kMostReplyMs = 30000;

// The search widens each byte of an answer to a character.
std::string Narrow(const std::wstring& wide) {
  std::string text;
  text.reserve(wide.size());
  for (const wchar_t unit : wide) text += static_cast<char>(unit);
  return text;
}

}  // namespace

Reply LocalLink::ReadReply() {
  const Platform::Clock& clock = waiter_.GetClock();
  const Platform::Deadline end = waiter_.In(kMostReplyMs);
  lastRead_.clear();
  while (lastRead_.size() < kMostReplyBytes && clock.Now() < end) {
    const auto left = std::chrono::ceil<milliseconds>(end - clock.Now());
    const auto limit = std::min(left, milliseconds(kTransferTimeoutMs));
    const std::string block = ReadBlock(static_cast<int>(limit.count()));
    lastRead_ += block;
    if (block.empty() || block.find('\n') != std::string::npos) break;
  }
  if (lastRead_.empty()) return {{}, Failure(Reason::kSilence)};
  return {lastRead_};
}

bool LocalLink::LastRead(std::vector<uint8_t>& data) const {
  data.assign(lastRead_.begin(), lastRead_.end());
  return !data.empty();
}

bool UsbLink::EnumerateDevices(std::vector<std::string>& found) {
  const bool searched = connector_->SearchDevices();
  std::vector<std::wstring> paths;
  found.clear();
  for (const std::wstring& path : connector_->GetDevicePaths(paths)) {
    // A name that cannot be shown still holds its place.
    found.push_back(Platform::NarrowPath(path).value_or(std::string()));
  }
  return searched;
}

Reason UsbLink::Open(int index) {
  return Opening(index >= 0 && connector_->Open(std::to_wstring(index).c_str()));
}

Reason UsbLink::Reopen(bool job) {
  // A connection that broke has lost bytes of the job.
  const bool broken = job && connector_->Look() == LinkState::kEnded;
  return Opening(!broken && connector_->Reopen(job));
}

bool UsbLink::Discard(int quietMs, int limitMs) {
  return connector_->DiscardUntilQuiet(static_cast<uint32_t>(quietMs),
                                       static_cast<uint32_t>(limitMs));
}

Reason UsbLink::Write(const uint8_t* data, size_t length, bool /*patient*/) {
  if (length == 0) return Reason::kNone;  // it queues nothing
  if (length > std::numeric_limits<uint32_t>::max() ||
      connector_->Write(data, static_cast<uint32_t>(length), kTransferTimeoutMs) != 0) {
    return Failure(Reason::kNotTaken);
  }
  return Reason::kNone;
}

std::string UsbLink::Identity(int index) const {
  return index < 0 ? std::string() : connector_->Identity(static_cast<size_t>(index));
}

std::string UsbLink::ReadBlock(int timeoutMs) {
  // One byte more than is read: a block without a zero byte ends there.
  uint8_t buffer[kReadBytes + 1] = {};
  connector_->Read(buffer, static_cast<uint32_t>(timeoutMs));
  return reinterpret_cast<const char*>(buffer);
}

bool SocketLink::SearchDevices(std::vector<std::string>& found, const std::string& address,
                               const std::string& netmask, int timeoutMs) {
  const SearchSettings& settings = SearchSettings::Instance();
  const std::string message = settings.Message();
  const int length = static_cast<int>(message.size());
  const auto port = static_cast<uint16_t>(settings.Port());
  const int waitMs = EffectiveTimeoutMs(timeoutMs);
  found.clear();
  devices_.clear();
  UdpSearchSocket search(waiter_);
  if (!search.Open()) return false;
  bool searched = true;
  if (address.empty() && netmask.empty()) {
    search.BroadcastAll(message.data(), length, port, waitMs);
  } else {
    searched = search.BroadcastTo(message.data(), length, address, netmask, port, waitMs) != 0;
  }
  for (const std::wstring& reply : search.Replies()) {
    found.push_back(Narrow(reply));
    Transport::NetworkDevice device = Transport::ParseDiscoveryReply(found.back());
    if (device.valid) devices_.push_back(std::move(device));
  }
  return searched;
}

Reason SocketLink::Open(int index) {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return Reason::kUnreachable;
  return Connect(devices_[static_cast<size_t>(index)]);
}

Reason SocketLink::Reopen(bool /*job*/) { return Connect(Transport::NetworkDevice(current_)); }

// A name in an answer is not looked up: that may take long, and leads wherever its sender likes.
Reason SocketLink::Connect(const Transport::NetworkDevice& device) {
  const std::string address = Transport::LiteralAddress(device.address);
  if (address.empty()) {
    Platform::Diagnostic("connect: \"%s\" is no address", device.address.c_str());
    return Reason::kUnreachable;
  }
  opened_ = socket_.Connect(address, device.port);
  if (opened_) current_ = device;
  return Opening(opened_);
}

void SocketLink::Close() {
  socket_.Close();
  opened_ = false;
}

LinkState SocketLink::Look() {
  Discard(0, 0);
  if (IsOpen()) return LinkState::kAlive;
  return opened_ ? LinkState::kEnded : LinkState::kClosed;
}

// A printer that sends without a pause is dropped.
bool SocketLink::Discard(int quietMs, int limitMs) {
  const Platform::Deadline end = waiter_.In(limitMs);
  bool any = false;
  int64_t waitMs = 0;
  do {
    Transport::DiscardLimit limit(limits_, waiter_.GetClock());
    for (std::string block; !(block = ReadBlock(0)).empty(); any = true) {
      if (!limit.Allows(block.size())) socket_.Close();
    }
    const auto left = std::chrono::ceil<milliseconds>(end - waiter_.GetClock().Now());
    waitMs = std::min<int64_t>(quietMs, left.count());
  } while (waitMs > 0 && socket_.WaitForInput(static_cast<int>(waitMs)));
  return any;
}

std::string SocketLink::Identity(int index) const {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return {};
  return devices_[static_cast<size_t>(index)].Identity();
}

Reason SocketLink::Write(const uint8_t* data, size_t length, bool /*patient*/) {
  if (length == 0) return Reason::kNone;  // it queues nothing
  Discard(0, 0);
  if (socket_.Send(reinterpret_cast<const char*>(data), static_cast<int64_t>(length)) == 0) {
    return Reason::kNone;
  }
  const Reason failure = Failure(Reason::kNotTaken);
  if (IsOpen()) Close();
  return failure;
}

std::string SocketLink::ReadBlock(int timeoutMs) {
  std::array<char, TcpClientSocket::kReadBytes> buffer{};
  int received = 0;
  if (!socket_.WaitForInput(timeoutMs)) return {};
  if (socket_.Receive(buffer.data(), 0, received) != 0) return {};
  // Ready without a byte: the printer has closed the connection.
  if (received == 0) socket_.Close();
  return {buffer.data(), static_cast<size_t>(received)};
}

void LocalLinks::SetMode(int mode) {
  constexpr int kUsb = 0;
  constexpr int kSockets = 1;
  if (mode != kUsb && mode != kSockets) {
    Platform::Diagnostic("local link: no mode %d", mode);
    return;
  }
  if (usesSockets == (mode == kSockets)) return;
  Current().Close();
  usesSockets = mode == kSockets;
}

}  // namespace Nuv::Connect
