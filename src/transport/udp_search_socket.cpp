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
  if (SocketSystem::Start()) socket_ = SocketSystem::Create(SocketSystem::Kind::kUdp);
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
  if (!IsOpen()) return;
  replies_.clear();
  SocketSystem::EnableBroadcast(socket_);
  const std::vector<HostNetwork> networks = NetworksToSearch(
      SocketSystem::ResolveIPv4(SocketSystem::LocalHostName()), SocketSystem::Interfaces());
  for (const HostNetwork& network : networks) {
    const std::string broadcast = DirectedBroadcast(network.address, network.netmask);
    if (!SearchNetwork(message, length, broadcast, port, timeoutMs)) return;
  }
  waiter_.GetClock().SleepFor(kPauseAfterSearch);
}

int UdpSearchSocket::BroadcastTo(const char* message, int length, const std::string& address,
                                 const std::string& netmask, uint16_t port, int timeoutMs) {
  if (!IsOpen()) return 0;
  replies_.clear();
  SocketSystem::EnableBroadcast(socket_);
  if (!SearchNetwork(message, length, DirectedBroadcast(address, netmask), port, timeoutMs)) {
    return 0;
  }
  waiter_.GetClock().SleepFor(kPauseAfterSearch);
  return 1;
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
