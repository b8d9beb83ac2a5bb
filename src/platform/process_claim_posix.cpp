#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/diagnostics.h"
#include "platform/process_claim.h"

namespace Nuv::Platform {
namespace {

// Of this process, in the system's ticks; with the number it names a process for good.
std::string StartTime() {
  constexpr int kFieldsBehindName = 20;
  std::ifstream file("/proc/self/stat");
  std::string text((std::istreambuf_iterator<char>(file)), {});
  // The program's name may hold anything, also what looks like its end.
  std::istringstream fields(text.substr(text.rfind(')') + 1));
  std::string field;
  for (int i = 0; i < kFieldsBehindName; ++i) fields >> field;
  return field;
}

}  // namespace

// An address of a local socket that is in no folder: it is free again when its socket is closed.
ProcessClaim::ProcessClaim(const std::string& name)
    : handle_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  const std::string whole =
      "nuvconnect-" + name + "-" + std::to_string(getpid()) + "-" + StartTime();
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const size_t length = std::min(whole.size(), sizeof address.sun_path - 1);
  std::copy_n(whole.data(), length, address.sun_path + 1);
  const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
  const bool bound = handle_ >= 0 && bind(static_cast<int>(handle_),
                                          reinterpret_cast<const sockaddr*>(&address), size) == 0;
  held_ = bound || errno != EADDRINUSE;
  if (!bound && held_) Diagnostic("%s: cannot be claimed: %s", name.c_str(), std::strerror(errno));
}

ProcessClaim::~ProcessClaim() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

}  // namespace Nuv::Platform
