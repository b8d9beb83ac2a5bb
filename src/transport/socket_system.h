// What the socket layer needs of the operating system: one file per system implements it.
#ifndef NUV_TRANSPORT_SOCKET_SYSTEM_H_
#define NUV_TRANSPORT_SOCKET_SYSTEM_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "transport/search_networks.h"

namespace SocketSystem {

// A socket of the system.
using Handle = intptr_t;
constexpr Handle kNone = -1;

enum class Kind { kTcp, kUdp };

// Starts the system's sockets, once for the life of the process. False when they cannot be had.
bool Start();

// kNone on failure; LastError tells why. Of the others, a negative result is a failure. A TCP
// socket never blocks: Connect waits for `microseconds` at most, Send takes what fits now, which
// may be nothing.
Handle Create(Kind kind);
bool Connect(Handle socket, const std::string& address, uint16_t port, int64_t microseconds);
bool EnableBroadcast(Handle socket);
ptrdiff_t Send(Handle socket, const char* data, size_t length);
ptrdiff_t SendTo(Handle socket, const char* data, size_t length, const std::string& address,
                 uint16_t port);
ptrdiff_t Receive(Handle socket, char* buffer, size_t length);

// True when there is something to read, or the connection has ended, within `microseconds`.
bool WaitReadable(Handle socket, int64_t microseconds);

// True when bytes can be sent, or the connection has ended, within `microseconds`.
bool WaitWritable(Handle socket, int64_t microseconds);

void ShutDownSending(Handle socket);
void ShutDown(Handle socket);
void Close(Handle socket);

// The system's code of the last failure on this thread.
int LastError();

// The IPv4 addresses of this host's interfaces.
std::vector<HostInterface> Interfaces();

}  // namespace SocketSystem

#endif  // NUV_TRANSPORT_SOCKET_SYSTEM_H_
