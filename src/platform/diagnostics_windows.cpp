#include <windows.h>

#include "platform/diagnostics.h"

namespace Nuv::Platform {

void WriteDebugOutput(const std::string& line) { OutputDebugStringA(line.c_str()); }

}  // namespace Nuv::Platform
