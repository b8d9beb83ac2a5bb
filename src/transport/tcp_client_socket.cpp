#include "transport/tcp_client_socket.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "transport/host_addresses.h"

bool TcpClientSocket::Connect(const std::string& host, uint16_t port) {
  constexpr char kLocalHost[] = "127.0.0.1";
  Close();
  if (!SocketSystem::Start()) return false;
  const bool isLocal = host.empty() || host == "localhost";
  const std::vector<std::string> addresses = ResolveIPv4(isLocal ? kLocalHost : host);
  if (addresses.empty()) return false;
  socket_ = SocketSystem::Create(SocketSystem::Kind::kTcp);
  if (!IsOpen()) return false;
  if (!SocketSystem::Connect(socket_, addresses.front(), port)) {
    std::fprintf(stderr, "error connecting to server: %d\n", SocketSystem::LastError());
    Close();
    return false;
  }
  return true;
}

int TcpClientSocket::Send(const char* data, int length) {
  if (!IsOpen() || length < 1) return -1;
  return SocketSystem::Send(socket_, data, static_cast<size_t>(length)) == length ? 0 : -1;
}

int TcpClientSocket::Receive(char* buffer, int timeoutMs, int& received) {
  constexpr int kMsPerSecond = 1000;
  constexpr int64_t kMicrosecondsPerSecond = 1000000;
  const int64_t seconds = std::max(timeoutMs, 0) / kMsPerSecond;
  if (!IsOpen() || !SocketSystem::WaitReadable(socket_, seconds * kMicrosecondsPerSecond)) {
    return -1;
  }
  received =
      static_cast<int>(std::max<ptrdiff_t>(SocketSystem::Receive(socket_, buffer, kReadBytes), 0));
  return 0;
}

void TcpClientSocket::Close() {
  if (!IsOpen()) return;
  SocketSystem::ShutDownSending(socket_);
  SocketSystem::Close(socket_);
  socket_ = SocketSystem::kNone;
}
