#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "transport/socket_system.h"

namespace Nuv::Transport::SocketSystem {
namespace {

int Descriptor(Handle socket) { return static_cast<int>(socket); }

sockaddr_in Address(const std::string& address, uint16_t port) {
  sockaddr_in target{};
  target.sin_family = AF_INET;
  target.sin_port = htons(port);
  inet_pton(AF_INET, address.c_str(), &target.sin_addr);
  return target;
}

std::string Text(const sockaddr* address) {
  if (address == nullptr) return {};
  char text[INET_ADDRSTRLEN] = {};
  inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text, sizeof text);
  return text;
}

}  // namespace

Handle Create(Kind kind) {
  const int type = kind == Kind::kTcp ? SOCK_STREAM | SOCK_NONBLOCK : SOCK_DGRAM;
  const int handle = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
  // Of others it fails, which does no harm.
  const int on = 1;
  setsockopt(handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return handle;
}

bool Connect(Handle socket, const std::string& address, uint16_t port) {
  const sockaddr_in target = Address(address, port);
  const auto* const raw = reinterpret_cast<const sockaddr*>(&target);
  // Interrupted, it goes on all the same.
  return ::connect(Descriptor(socket), raw, sizeof target) == 0 || errno == EINPROGRESS ||
         errno == EINTR;
}

bool Connected(Handle socket, bool ready) {
  int error = ETIMEDOUT;
  socklen_t size = sizeof error;
  if (ready) getsockopt(Descriptor(socket), SOL_SOCKET, SO_ERROR, &error, &size);
  errno = error;
  return error == 0;
}

bool EnableBroadcast(Handle socket) {
  const int on = 1;
  return setsockopt(Descriptor(socket), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) == 0;
}

// A printer that has gone must fail the call, not end the host by a signal.
ptrdiff_t Send(Handle socket, const char* data, size_t length) {
  ptrdiff_t sent = 0;
  do {
    sent = ::send(Descriptor(socket), data, length, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent < 0 && errno == EAGAIN ? 0 : sent;
}

ptrdiff_t SendTo(Handle socket, const char* data, size_t length, const std::string& address,
                 uint16_t port) {
  const sockaddr_in target = Address(address, port);
  return ::sendto(Descriptor(socket), data, length, MSG_NOSIGNAL,
                  reinterpret_cast<const sockaddr*>(&target), sizeof target);
}

ptrdiff_t Receive(Handle socket, char* buffer, size_t length) {
  return ::recv(Descriptor(socket), buffer, length, 0);
}

void LimitSilence(Handle socket, std::chrono::milliseconds limit) {
  const auto ms = static_cast<unsigned>(limit.count());
  ::setsockopt(Descriptor(socket), IPPROTO_TCP, TCP_USER_TIMEOUT, &ms, sizeof ms);
}

void ShutDownSending(Handle socket) { ::shutdown(Descriptor(socket), SHUT_WR); }
void ShutDown(Handle socket) { ::shutdown(Descriptor(socket), SHUT_RDWR); }
void Close(Handle socket) { ::close(Descriptor(socket)); }
int LastError() { return errno; }

std::vector<HostInterface> Interfaces() {
  std::vector<HostInterface> interfaces;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return interfaces;
  for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
    if (each->ifa_addr == nullptr || each->ifa_addr->sa_family != AF_INET) continue;
    interfaces.push_back({Text(each->ifa_addr), Text(each->ifa_netmask),
                          (each->ifa_flags & IFF_RUNNING) != 0,
                          (each->ifa_flags & IFF_LOOPBACK) != 0});
  }
  freeifaddrs(list);
  return interfaces;
}

std::string LocalHostName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : std::string();
}

std::vector<std::string> ResolveIPv4(const std::string& name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  addrinfo* found = nullptr;
  std::vector<std::string> addresses;
  if (name.empty() || getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) return addresses;
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
