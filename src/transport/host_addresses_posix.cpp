#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>

#include "transport/host_addresses.h"

namespace Nuv::Transport {

std::string LocalHostName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : std::string();
}

std::vector<std::string> ResolveIPv4(const std::string& name) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
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

}  // namespace Nuv::Transport
