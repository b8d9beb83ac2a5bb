#ifndef NUV_TRANSPORT_HOST_ADDRESSES_H_
#define NUV_TRANSPORT_HOST_ADDRESSES_H_

#include <string>
#include <vector>

namespace Nuv::Transport {

// This host's own name; empty when the system does not tell.
std::string LocalHostName();

// The IPv4 addresses, as text and each once, that `name` resolves to; a dotted address is its own.
// By the system's resolver: Qt's warns on the standard error of every program that has no
// application object, which most hosts have not.
std::vector<std::string> ResolveIPv4(const std::string& name);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_HOST_ADDRESSES_H_
