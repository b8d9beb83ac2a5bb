#ifndef NUV_TRANSPORT_SEARCH_ADDRESSES_H_
#define NUV_TRANSPORT_SEARCH_ADDRESSES_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Nuv::Transport {

// An IPv4 address as a number, and the UDP port on which printers are asked there.
using SearchAddress = std::pair<uint32_t, uint16_t>;

// Whom a search asks.
struct SearchAddresses {
  static constexpr size_t kMost = 1000;

  bool broadcast = false;                  // every network of the host
  std::vector<SearchAddress> asked;        // one by one, each once
  std::vector<std::string> notUnderstood;  // and what was one too many
};

// The broadcast addresses of the host's networks, which it takes a moment to list.
using ListBroadcasts = std::function<std::vector<std::string>()>;

// Reads "broadcast 10.0.5.7 10.0.6.2:6014", in any order, separated by blanks. `port`: of addresses
// without an own one. Addresses of many devices (multicast, and those of `broadcasts`) are not
// understood: who asks them would not know who is to answer.
SearchAddresses ParseSearchAddresses(const std::string& text, uint16_t port,
                                     const ListBroadcasts& broadcasts);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_SEARCH_ADDRESSES_H_
