#ifndef NUV_TRANSPORT_DISCOVERY_REPLY_H_
#define NUV_TRANSPORT_DISCOVERY_REPLY_H_

#include <cstdint>
#include <string>

namespace Nuv::Transport {

// A printer that answered the search.
struct NetworkDevice {
  bool valid = false;   // the reply was an acceptance; only such entries are kept
  std::string address;  // as text
  uint16_t port = 0;    // TCP port of the command exchange
  std::string name;
  std::string mac;  // as sent

  // What tells this printer from others, whatever place it has in a list.
  std::string Identity() const { return address + ":" + std::to_string(port); }
};

// Reads one search reply, such as
//   F195 OK IP=<192.168.1.5> PORT=6020 N=<Lab> M:02:00:5E:00:00:01 CN:1
// Invalid when its second word is not "OK", or (with a diagnostic) when its port is no decimal
// number of 16 bits; fields that are not there stay empty or 0.
NetworkDevice ParseDiscoveryReply(const std::string& reply);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_DISCOVERY_REPLY_H_
