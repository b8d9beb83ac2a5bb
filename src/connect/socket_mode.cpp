#include "connect/socket_mode.h"

#include <array>
#include <limits>

namespace Nuv::Connect {
namespace {

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
  const NetworkDevice& device = devices_[static_cast<size_t>(index)];
  if (!socket_.Connect(device.address, device.port)) return false;
  current_ = device;
  return true;
}

bool SocketMode::Reopen(bool /*inJob*/) {
  return current_.valid && socket_.Connect(current_.address, current_.port);
}

bool SocketMode::DiscardUntilQuiet(int quietMs, int /*limitMs*/) {
  bool any = false;
  while (!ReadBlock(quietMs, {}).empty()) any = true;
  return any;
}

std::string SocketMode::Identity(int index) const {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return {};
  const NetworkDevice& device = devices_[static_cast<size_t>(index)];
  return device.address + ":" + std::to_string(device.port);
}

bool SocketMode::Write(const uint8_t* data, size_t length) {
  while (!ReadBlock(0, {}).empty()) {
  }
  if (length > static_cast<size_t>(std::numeric_limits<int>::max())) return false;
  return socket_.Send(reinterpret_cast<const char*>(data), static_cast<int>(length)) == 0;
}

std::string SocketMode::ReadBlock(int timeoutMs, const GivenUp& /*givenUp*/) {
  std::array<char, TcpClientSocket::kReadBytes> buffer{};
  int received = 0;
  if (socket_.Receive(buffer.data(), timeoutMs, received) != 0) return {};
  // Ready without a byte: the printer has closed the connection.
  if (received == 0) socket_.Close();
  return {buffer.data(), static_cast<size_t>(received)};
}

}  // namespace Nuv::Connect
