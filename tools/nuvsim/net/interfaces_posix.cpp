#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>

#include "nuvsim/net/interfaces.h"

namespace NuvSim {
namespace {

uint32_t AddressOf(const sockaddr* address) {
  sockaddr_in ipv4;
  std::memcpy(&ipv4, address, sizeof ipv4);
  return ntohl(ipv4.sin_addr.s_addr);
}

}  // namespace

std::vector<Ipv4Interface> RunningInterfaces() {
  std::vector<Ipv4Interface> interfaces;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return interfaces;
  constexpr unsigned kRunning = IFF_UP | IFF_RUNNING;
  for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
    if (each->ifa_addr == nullptr || each->ifa_netmask == nullptr) continue;
    if (each->ifa_addr->sa_family != AF_INET || (each->ifa_flags & kRunning) != kRunning) continue;
    interfaces.push_back({AddressOf(each->ifa_addr), AddressOf(each->ifa_netmask)});
  }
  freeifaddrs(list);
  return interfaces;
}

bool CanBindToBroadcast() { return true; }

bool ListenerReusesAddress() { return true; }

}  // namespace NuvSim
