#include <winsock2.h>
// winsock2.h must come before iphlpapi.h, which needs it.
#include <iphlpapi.h>

#include "nuvsim/addresses.h"
#include "nuvsim/net/interfaces.h"

namespace NuvSim {

std::vector<Ipv4Interface> RunningInterfaces() {
  // The adapter list leaves out loopback, which a printer on 127.0.0.1 is served on.
  std::vector<Ipv4Interface> interfaces = {{0x7f000001u, 0xff000000u}};
  ULONG length = 0;
  if (GetAdaptersInfo(nullptr, &length) != ERROR_BUFFER_OVERFLOW) return interfaces;
  std::vector<IP_ADAPTER_INFO> adapters(length / sizeof(IP_ADAPTER_INFO) + 1);
  length = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
  if (GetAdaptersInfo(adapters.data(), &length) != NO_ERROR) return interfaces;
  for (const IP_ADAPTER_INFO* adapter = adapters.data(); adapter != nullptr;
       adapter = adapter->Next) {
    for (const IP_ADDR_STRING* each = &adapter->IpAddressList; each != nullptr; each = each->Next) {
      const auto address = ParseIpv4(each->IpAddress.String);
      const auto netmask = ParseIpv4(each->IpMask.String);
      // An adapter without a link reports 0.0.0.0.
      if (address && netmask && *address != 0) interfaces.push_back({*address, *netmask});
    }
  }
  return interfaces;
}

bool CanBindToBroadcast() { return false; }

bool ListenerReusesAddress() { return false; }

}  // namespace NuvSim
