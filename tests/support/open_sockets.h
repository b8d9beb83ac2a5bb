#ifndef NUV_TESTS_OPEN_SOCKETS_H_
#define NUV_TESTS_OPEN_SOCKETS_H_

#include <set>

// The descriptors of this program's IPv4 sockets. Empty on Windows, where handles cannot be listed.
std::set<int> OpenSockets();

// How many of them send each request at once, however small.
int SocketsWithoutDelay();

#endif  // NUV_TESTS_OPEN_SOCKETS_H_
