#include "connect/socket_mode.h"

#include <array>
#include <limits>

#include "platform/diagnostics.h"
#include "transport/broadcast_address.h"

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
  if (!Connect(device)) return false;
  current_ = device;
  return true;
}

bool SocketMode::Reopen(int /*index*/) { return current_.valid && Connect(current_); }

// A name in an answer is not looked up: that may take long, and leads wherever its sender likes.
bool SocketMode::Connect(const NetworkDevice& device) {
  const std::string address = LiteralAddress(device.address);
  if (!address.empty()) return socket_.Connect(address, device.port);
  Platform::Diagnostic("connect: \"%s\" is no address", device.address.c_str());
  return false;
}

bool SocketMode::Write(const uint8_t* data, size_t length) {
  while (!ReadBlock(0).empty()) {
  }
  if (length > static_cast<size_t>(std::numeric_limits<int>::max())) return false;
  return socket_.Send(reinterpret_cast<const char*>(data), static_cast<int>(length)) == 0;
}

std::string SocketMode::ReadBlock(int timeoutMs) {
  std::array<char, TcpClientSocket::kReadBytes> buffer{};
  int received = 0;
  if (socket_.Receive(buffer.data(), timeoutMs, received) != 0) return {};
  // Ready without a byte: the printer has closed the connection.
  if (received == 0) socket_.Close();
  return {buffer.data(), static_cast<size_t>(received)};
}

}  // namespace Nuv::Connect
