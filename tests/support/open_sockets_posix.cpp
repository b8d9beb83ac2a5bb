#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "tests/support/open_sockets.h"

std::set<int> OpenSockets() {
  constexpr int kMost = 1024;
  std::set<int> sockets;
  for (int descriptor = 0; descriptor < kMost; ++descriptor) {
    int family = 0;
    socklen_t size = sizeof family;
    if (getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &family, &size) == 0 && family == AF_INET) {
      sockets.insert(descriptor);
    }
  }
  return sockets;
}

int SocketsWithoutDelay() {
  int count = 0;
  for (const int socket : OpenSockets()) {
    int on = 0;
    socklen_t size = sizeof on;
    if (getsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, &size) == 0 && on != 0) ++count;
  }
  return count;
}
