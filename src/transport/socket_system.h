// What the socket layer needs of the operating system: one file per system implements it.
#ifndef NUV_TRANSPORT_SOCKET_SYSTEM_H_
#define NUV_TRANSPORT_SOCKET_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "transport/addresses.h"

namespace Nuv::Transport::SocketSystem {

using Handle = Platform::Handle;
constexpr Handle kNone = -1;

enum class Kind { kTcp, kUdp };

// kNone on failure; LastError tells why. Of the others, a negative result is a failure. A TCP
// socket never blocks: Connect begins a connection, of which Connected tells whether it stands,
// once the socket is `ready` for output, or in vain was waited for; Send takes what fits now, which
// may be nothing.
Handle Create(Kind kind);
bool Connect(Handle socket, const std::string& address, uint16_t port);
bool Connected(Handle socket, bool ready);
bool EnableBroadcast(Handle socket);
ptrdiff_t Send(Handle socket, const char* data, size_t length);
ptrdiff_t SendTo(Handle socket, const char* data, size_t length, const std::string& address,
                 uint16_t port);
ptrdiff_t Receive(Handle socket, char* buffer, size_t length);

// How long the other side may leave what was sent unacknowledged until the system ends the
// connection; 0: as long as it likes. Where the system lacks it, nothing changes.
void LimitSilence(Handle socket, std::chrono::milliseconds limit);

void ShutDownSending(Handle socket);
void ShutDown(Handle socket);
void Close(Handle socket);

// The system's code of the last failure on this thread.
int LastError();

// The IPv4 addresses of this host's interfaces.
std::vector<HostInterface> Interfaces();

// This host's own name; empty when the system does not tell.
std::string LocalHostName();

// The IPv4 addresses, as text and each once, that `name` resolves to; a dotted address is its own.
// By the system's resolver: Qt's warns on the standard error of every program that has no
// application object, which most hosts have not.
std::vector<std::string> ResolveIPv4(const std::string& name);

}  // namespace Nuv::Transport::SocketSystem

#endif  // NUV_TRANSPORT_SOCKET_SYSTEM_H_
