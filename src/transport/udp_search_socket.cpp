#include "transport/udp_search_socket.h"

#include <chrono>

#include "platform/diagnostics.h"
#include "transport/addresses.h"
#include "transport/search_bounds.h"
#include "transport/socket_system.h"

using namespace Nuv::Transport;
using Nuv::Platform::Diagnostic;

namespace {

constexpr int kDefaultWaitMs = 500;
constexpr std::chrono::milliseconds kPauseAfterSearch(100);
constexpr size_t kReplyBytes = 255;

}  // namespace

bool UdpSearchSocket::Open() {
  Close();
  socket_ = SocketSystem::Create(SocketSystem::Kind::kUdp);
  if (IsOpen()) return true;
  Diagnostic("socket error! error code is %d/n", SocketSystem::LastError());
  return false;
}

void UdpSearchSocket::Close() {
  if (!IsOpen()) return;
  SocketSystem::ShutDown(socket_);
  SocketSystem::Close(socket_);
  socket_ = SocketSystem::kNone;
}

void UdpSearchSocket::BroadcastAll(const char* message, int length, uint16_t port, int timeoutMs) {
  std::vector<std::string> broadcasts;
  for (const HostNetwork& network : NetworksToSearch(
           SocketSystem::ResolveIPv4(SocketSystem::LocalHostName()), SocketSystem::Interfaces())) {
    broadcasts.push_back(DirectedBroadcast(network.address, network.netmask));
  }
  Search(message, length, broadcasts, port, timeoutMs);
}

int UdpSearchSocket::BroadcastTo(const char* message, int length, const std::string& address,
                                 const std::string& netmask, uint16_t port, int timeoutMs) {
  return Search(message, length, {DirectedBroadcast(address, netmask)}, port, timeoutMs) ? 1 : 0;
}

bool UdpSearchSocket::Search(const char* message, int length,
                             const std::vector<std::string>& broadcasts, uint16_t port,
                             int timeoutMs) {
  if (!IsOpen()) return false;
  replies_.clear();
  SocketSystem::EnableBroadcast(socket_);
  for (const std::string& broadcast : broadcasts) {
    if (!SearchNetwork(message, length, broadcast, port, timeoutMs)) return false;
  }
  waiter_.GetClock().SleepFor(kPauseAfterSearch);
  return true;
}

bool UdpSearchSocket::SearchNetwork(const char* message, int length, const std::string& broadcast,
                                    uint16_t port, int timeoutMs) {
  if (SocketSystem::SendTo(socket_, message, static_cast<size_t>(length), broadcast, port) < 0) {
    Diagnostic("sendto error!, error code is %d", SocketSystem::LastError());
    return false;
  }
  SearchBounds bounds(broadcast, timeoutMs > 0 ? timeoutMs : kDefaultWaitMs, waiter_.GetClock());
  char buffer[kReplyBytes];
  while (const int waitMs = bounds.WaitMs()) {
    if (!waiter_.Until(waiter_.In(waitMs), socket_, Nuv::Platform::Readiness::kInput)) break;
    const ptrdiff_t size = SocketSystem::Receive(socket_, buffer, sizeof buffer);
    if (size < 0 || !bounds.Takes(static_cast<size_t>(size))) break;
    std::wstring reply;
    for (ptrdiff_t i = 0; i < size; ++i) {
      reply += static_cast<wchar_t>(static_cast<unsigned char>(buffer[i]));
    }
    replies_.push_back(std::move(reply));
  }
  return true;
}
