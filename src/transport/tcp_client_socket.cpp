#include "transport/tcp_client_socket.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "transport/socket_system.h"

using namespace Nuv::Transport;

namespace {

using Nuv::Platform::Readiness;

constexpr int kMsPerSecond = 1000;

}  // namespace

bool TcpClientSocket::Connect(const std::string& host, uint16_t port) {
  constexpr char kLocalHost[] = "127.0.0.1";
  Close();
  const bool isLocal = host.empty() || host == "localhost";
  const std::vector<std::string> addresses = SocketSystem::ResolveIPv4(isLocal ? kLocalHost : host);
  if (addresses.empty()) return false;
  socket_ = SocketSystem::Create(SocketSystem::Kind::kTcp);
  if (SocketSystem::Connect(socket_, addresses.front(), port) &&
      SocketSystem::Connected(
          socket_, waiter_.Until(waiter_.In(limits_.connectMs), socket_, Readiness::kOutput))) {
    return true;
  }
  std::fprintf(stderr, "error connecting to server: %d\n", SocketSystem::LastError());
  Close();
  return false;
}

int TcpClientSocket::Send(const char* data, int64_t length) {
  if (!IsOpen() || length < 1) return -1;
  int64_t left = length;
  const auto takeMore = [&]() -> int64_t {
    const ptrdiff_t taken =
        SocketSystem::Send(socket_, data + (length - left), static_cast<size_t>(left));
    return taken < 0 ? -1 : left - taken;
  };
  left = takeMore();
  const WriteEnd end =
      left < 0 ? WriteEnd::kLost : FinishWrite(socket_, left, limits_, waiter_, takeMore);
  if (end == WriteEnd::kLost) Close();
  return end == WriteEnd::kTaken ? 0 : -1;
}

int TcpClientSocket::Receive(char* buffer, int timeoutMs, int& received) {
  const int wholeMs = std::max(timeoutMs, 0) / kMsPerSecond * kMsPerSecond;
  if (!WaitForInput(wholeMs)) return -1;
  received =
      static_cast<int>(std::max<ptrdiff_t>(SocketSystem::Receive(socket_, buffer, kReadBytes), 0));
  return 0;
}

bool TcpClientSocket::WaitForInput(int timeoutMs) {
  return IsOpen() && waiter_.Until(waiter_.In(timeoutMs), socket_, Readiness::kInput);
}

void TcpClientSocket::Close() {
  if (!IsOpen()) return;
  SocketSystem::ShutDownSending(socket_);
  SocketSystem::Close(socket_);
  socket_ = SocketSystem::kNone;
}
