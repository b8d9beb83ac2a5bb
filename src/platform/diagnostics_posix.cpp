#include <syslog.h>

#include "platform/diagnostics.h"

namespace Nuv::Platform {

// No openlog: its identity belongs to the host program.
void WriteDebugOutput(const std::string& line) { syslog(LOG_USER | LOG_DEBUG, "%s", line.c_str()); }

}  // namespace Nuv::Platform
