#ifndef NUV_PLATFORM_DIAGNOSTICS_H_
#define NUV_PLATFORM_DIAGNOSTICS_H_

#include <string>

namespace Nuv::Platform {

// Writes one printf-formatted diagnostic line, prefixed "[NKG]" and ended with one line end, to the
// system's debug output, and also to standard error when NUVCONNECT_DEBUG is set in the
// environment. Control characters in the text are written as "?", so a printer's reply cannot forge
// lines.
//
// Thread-safety: safe; lines are not mixed. Never fails.
#if defined(__MINGW32__)
__attribute__((format(gnu_printf, 1, 2)))
#elif defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void Diagnostic(const char* format, ...);

// From now on diagnostics go to `sink` alone, without prefix and line end, on whatever thread has
// one. It must not throw.
void SendDiagnosticsTo(void (*sink)(const std::string& text));

// Writes one finished line (with its line end) to the debug output of this system: the debugger on
// Windows, syslog at debug level elsewhere.
void WriteDebugOutput(const std::string& line);

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_DIAGNOSTICS_H_
