// What the simulator must ask the operating system about its networks.
//
// Thread-safety: every function may be called from any thread.
#ifndef NUVSIM_NET_INTERFACES_H_
#define NUVSIM_NET_INTERFACES_H_

#include <cstdint>
#include <vector>

namespace NuvSim {

// One IPv4 address of a running interface; numbers in host byte order.
struct Ipv4Interface {
  uint32_t address = 0;
  uint32_t netmask = 0;
  uint32_t Broadcast() const { return address | ~netmask; }
};

// Every IPv4 address of every running interface, loopback included; empty when the system does
// not tell.
std::vector<Ipv4Interface> RunningInterfaces();

// True where a socket bound to a broadcast address hears its broadcasts and nothing else; false
// where it cannot be bound to one, or is then bound to all addresses.
bool CanBindToBroadcast();

// True where a listener needs address reuse to take its port again soon after closing; false
// where reuse would let two listeners share the port.
bool ListenerReusesAddress();

}  // namespace NuvSim

#endif  // NUVSIM_NET_INTERFACES_H_
