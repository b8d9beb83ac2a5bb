#include "tests/support/open_sockets.h"

std::set<int> OpenSockets() { return {}; }

int SocketsWithoutDelay() { return 0; }
