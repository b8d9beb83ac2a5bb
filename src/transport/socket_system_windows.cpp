#include <winsock2.h>
#include <ws2tcpip.h>
// winsock2.h must come before iphlpapi.h, which needs it.
#include <iphlpapi.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "transport/socket_system.h"

namespace Nuv::Transport::SocketSystem {
namespace {

SOCKET Socket(Handle socket) { return static_cast<SOCKET>(socket); }

int Length(size_t length) {
  return static_cast<int>(std::min<size_t>(length, std::numeric_limits<int>::max()));
}

sockaddr_in Address(const std::string& address, uint16_t port) {
  sockaddr_in target{};
  target.sin_family = AF_INET;
  target.sin_port = htons(port);
  inet_pton(AF_INET, address.c_str(), &target.sin_addr);
  return target;
}

// Starts the system's sockets, once for the life of the process. False when they cannot be had.
bool Start() {
  static const bool started = [] {
    WSADATA data;
    return WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }();
  return started;
}

}  // namespace

Handle Create(Kind kind) {
  if (!Start()) return kNone;
  const bool isTcp = kind == Kind::kTcp;
  // Programs that the host starts do not get it.
  const SOCKET handle =
      WSASocketW(AF_INET, isTcp ? SOCK_STREAM : SOCK_DGRAM, isTcp ? IPPROTO_TCP : IPPROTO_UDP,
                 nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  if (handle == INVALID_SOCKET) return kNone;
  if (isTcp) {
    const char on = 1;
    setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    u_long nonBlocking = 1;
    ::ioctlsocket(handle, FIONBIO, &nonBlocking);
  }
  return static_cast<Handle>(handle);
}

bool Connect(Handle socket, const std::string& address, uint16_t port) {
  const sockaddr_in target = Address(address, port);
  const auto* const raw = reinterpret_cast<const sockaddr*>(&target);
  return ::connect(Socket(socket), raw, sizeof target) == 0 || WSAGetLastError() == WSAEWOULDBLOCK;
}

bool Connected(Handle socket, bool ready) {
  int error = WSAETIMEDOUT;
  int size = sizeof error;
  if (ready)
    getsockopt(Socket(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
  WSASetLastError(error);
  return error == 0;
}

bool EnableBroadcast(Handle socket) {
  const char on = 1;
  return setsockopt(Socket(socket), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0;
}

ptrdiff_t Send(Handle socket, const char* data, size_t length) {
  const int sent = ::send(Socket(socket), data, Length(length), 0);
  return sent < 0 && WSAGetLastError() == WSAEWOULDBLOCK ? 0 : sent;
}

ptrdiff_t SendTo(Handle socket, const char* data, size_t length, const std::string& address,
                 uint16_t port) {
  const sockaddr_in target = Address(address, port);
  return ::sendto(Socket(socket), data, Length(length), 0,
                  reinterpret_cast<const sockaddr*>(&target), sizeof target);
}

ptrdiff_t Receive(Handle socket, char* buffer, size_t length) {
  const int received = ::recv(Socket(socket), buffer, Length(length), 0);
  // Of a longer datagram the beginning is there; elsewhere that is no error.
  if (received < 0 && WSAGetLastError() == WSAEMSGSIZE) return Length(length);
  return received;
}

void LimitSilence(Handle socket, std::chrono::milliseconds limit) {
  constexpr int kMaximumRetransmissionMs = 14;  // TCP_MAXRTMS, which older headers lack
  const auto ms = static_cast<DWORD>(limit.count());
  ::setsockopt(Socket(socket), IPPROTO_TCP, kMaximumRetransmissionMs,
               reinterpret_cast<const char*>(&ms), sizeof ms);
}

void ShutDownSending(Handle socket) { ::shutdown(Socket(socket), SD_SEND); }
void ShutDown(Handle socket) { ::shutdown(Socket(socket), SD_BOTH); }
void Close(Handle socket) { ::closesocket(Socket(socket)); }
int LastError() { return WSAGetLastError(); }

std::vector<HostInterface> Interfaces() {
  std::vector<HostInterface> interfaces;
  ULONG size = 0;
  if (GetAdaptersInfo(nullptr, &size) != ERROR_BUFFER_OVERFLOW) return interfaces;
  std::vector<char> buffer(size);
  auto* const first = reinterpret_cast<IP_ADAPTER_INFO*>(buffer.data());
  if (GetAdaptersInfo(first, &size) != ERROR_SUCCESS) return interfaces;
  // The list has no loopback adapter, and those without a network at the address 0.0.0.0.
  for (const IP_ADAPTER_INFO* each = first; each != nullptr; each = each->Next) {
    const IP_ADDR_STRING& address = each->IpAddressList;
    if (std::strcmp(address.IpAddress.String, "0.0.0.0") == 0) continue;
    interfaces.push_back({address.IpAddress.String, address.IpMask.String, true,
                          each->Type == MIB_IF_TYPE_LOOPBACK});
  }
  return interfaces;
}

std::string LocalHostName() {
  char name[256] = {};
  if (!Start()) return {};
  return gethostname(name, sizeof name - 1) == 0 ? name : std::string();
}

std::vector<std::string> ResolveIPv4(const std::string& name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  addrinfo* found = nullptr;
  std::vector<std::string> addresses;
  if (name.empty() || !Start() || getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0)
    return addresses;
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    const auto* address = reinterpret_cast<const sockaddr_in*>(entry->ai_addr);
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(AF_INET, &address->sin_addr, text, sizeof text);
    if (std::find(addresses.begin(), addresses.end(), text) == addresses.end()) {
      addresses.emplace_back(text);
    }
  }
  freeaddrinfo(found);
  return addresses;
}

}  // namespace Nuv::Transport::SocketSystem
