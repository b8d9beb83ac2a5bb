#include "transport/search_networks.h"

#include "transport/broadcast_address.h"

namespace Nuv::Transport {

namespace {

std::string NetmaskOf(const std::string& address, const std::vector<HostInterface>& interfaces) {
  std::string netmask;
  for (const HostInterface& each : interfaces) {
    if (each.address == address) netmask = each.netmask;
  }
  return netmask;
}

}  // namespace

std::vector<HostNetwork> NetworksToSearch(const std::vector<std::string>& hostAddresses,
                                          const std::vector<HostInterface>& interfaces) {
  std::vector<HostNetwork> networks;
  for (const std::string& address : hostAddresses) {
    if (!IsLoopback(address)) networks.push_back({address, NetmaskOf(address, interfaces)});
  }
  if (!networks.empty()) return networks;
  for (const HostInterface& each : interfaces) {
    if (each.running && !each.loopback) networks.push_back({each.address, each.netmask});
  }
  return networks;
}

}  // namespace Nuv::Transport
