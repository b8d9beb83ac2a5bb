#ifndef NUV_TRANSPORT_BROADCAST_ADDRESS_H_
#define NUV_TRANSPORT_BROADCAST_ADDRESS_H_

#include <cstdint>
#include <string>

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

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_BROADCAST_ADDRESS_H_
