#ifndef NUV_TRANSPORT_SEARCH_NETWORKS_H_
#define NUV_TRANSPORT_SEARCH_NETWORKS_H_

#include <string>
#include <vector>

namespace Nuv::Transport {

// An IPv4 address of one of this host's network interfaces, as texts.
struct HostInterface {
  std::string address;
  std::string netmask;
  bool running = false;
  bool loopback = false;
};

// A network to search for printers.
struct HostNetwork {
  std::string address;  // this host's on it
  std::string netmask;  // empty: unknown, which is searched as 255.255.255.255
};

// The networks of the addresses that this host's own name resolves to, but for those in
// 127.0.0.0/8, where no printer is. When nothing is left (many Linux hosts resolve their name so),
// the networks of all running interfaces instead.
std::vector<HostNetwork> NetworksToSearch(const std::vector<std::string>& hostAddresses,
                                          const std::vector<HostInterface>& interfaces);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_SEARCH_NETWORKS_H_
