#include "connect/socket_mode.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

#include "platform/diagnostics.h"
#include "transport/broadcast_address.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;

// The search widens each byte of an answer to a character.
std::string Narrow(const std::wstring& wide) {
  std::string text;
  text.reserve(wide.size());
  for (const wchar_t unit : wide) text += static_cast<char>(unit);
  return text;
}

}  // namespace

bool SocketMode::SearchDevices(const std::string& message, int port, const std::string& address,
                               const std::string& netmask, int timeoutMs,
                               std::vector<std::string>& found) {
  found.clear();
  devices_.clear();
  if (!search_.Open()) return false;
  const int length = static_cast<int>(message.size());
  const auto udpPort = static_cast<uint16_t>(port);
  bool searched = true;
  if (address.empty() && netmask.empty()) {
    search_.BroadcastAll(message.data(), length, udpPort, timeoutMs);
  } else {
    searched =
        search_.BroadcastTo(message.data(), length, address, netmask, udpPort, timeoutMs) != 0;
  }
  search_.Close();
  for (const std::wstring& reply : search_.replies()) {
    found.push_back(Narrow(reply));
    NetworkDevice device = ParseDiscoveryReply(found.back());
    if (device.valid) devices_.push_back(std::move(device));
  }
  return searched;
}

bool SocketMode::Open(int index) {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return false;
  return Connect(devices_[static_cast<size_t>(index)]);
}

bool SocketMode::Reopen(bool /*inJob*/) {
  return current_.valid && Connect(NetworkDevice(current_));
}

// A name in an answer is not looked up: that may take long, and leads wherever its sender likes.
bool SocketMode::Connect(const NetworkDevice& device) {
  const std::string address = LiteralAddress(device.address);
  if (address.empty()) {
    Platform::Diagnostic("connect: \"%s\" is no address", device.address.c_str());
    return false;
  }
  opened_ = socket_.Connect(address, device.port);
  if (opened_) current_ = device;
  return opened_;
}

void SocketMode::Close() {
  socket_.Close();
  opened_ = false;
}

LinkState SocketMode::Look() {
  Discard();
  if (IsOpen()) return LinkState::kAlive;
  return opened_ ? LinkState::kEnded : LinkState::kClosed;
}

bool SocketMode::Discard() {
  DiscardLimit limit(limits_);
  for (std::string block; !(block = ReadBlock(0, {})).empty();) {
    if (!limit.Allows(block.size())) socket_.Close();
  }
  return limit.thrown() > 0;
}

bool SocketMode::DiscardUntilQuiet(int quietMs, int limitMs) {
  using std::chrono::steady_clock;
  const steady_clock::time_point end = steady_clock::now() + milliseconds(limitMs);
  bool any = Discard();
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
    const auto waitMs = std::min<int64_t>(quietMs, left.count());
    if (waitMs <= 0 || !socket_.WaitForInput(static_cast<int>(waitMs))) return any;
    any = Discard() || any;
  }
}

std::string SocketMode::Identity(int index) const {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return {};
  return devices_[static_cast<size_t>(index)].Identity();
}

bool SocketMode::Write(const uint8_t* data, size_t length) {
  Discard();
  if (length == 0 || length > static_cast<size_t>(std::numeric_limits<int>::max())) return false;
  if (socket_.Send(reinterpret_cast<const char*>(data), static_cast<int>(length)) == 0) return true;
  socket_.Close();
  return false;
}

std::string SocketMode::ReadBlock(int timeoutMs, const GivenUp& givenUp) {
  constexpr int kSliceMs = 600;
  for (int left = timeoutMs; !socket_.WaitForInput(std::min(left, kSliceMs)); left -= kSliceMs) {
    if (left <= kSliceMs || (givenUp && givenUp())) return {};
  }
  std::array<char, TcpClientSocket::kReadBytes> buffer{};
  int received = 0;
  if (socket_.Receive(buffer.data(), 0, received) != 0) return {};
  // Ready without a byte: the printer has closed the connection.
  if (received == 0) socket_.Close();
  return {buffer.data(), static_cast<size_t>(received)};
}

}  // namespace Nuv::Connect
