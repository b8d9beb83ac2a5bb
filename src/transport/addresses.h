// Addresses as texts and numbers, and the networks to search.
#ifndef NUV_TRANSPORT_ADDRESSES_H_
#define NUV_TRANSPORT_ADDRESSES_H_

#include <cstdint>
#include <string>
#include <vector>

namespace Nuv::Transport {

// The number of a dotted IPv4 text: value = value * 256 + part, kept to 32 bits, a part that is no
// decimal number counting as 0. An empty text gives 0.
uint32_t DottedToNumber(const std::string& dotted);

// Four decimal octets joined by ".", most significant first.
std::string NumberToDotted(uint32_t number);

// The address that reaches every device on the network of `address`: address OR NOT netmask. With
// an empty netmask (unknown network) that is 255.255.255.255.
std::string DirectedBroadcast(const std::string& address, const std::string& netmask);

// True for an address of 127.0.0.0/8.
bool IsLoopback(const std::string& address);

// The plain form of a text that is an IPv4 or IPv6 address; empty for any other, names above all.
std::string LiteralAddress(const std::string& text);

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

#endif  // NUV_TRANSPORT_ADDRESSES_H_
