#include "platform/diagnostics.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace Nuv::Platform {
namespace {

constexpr char kPrefix[] = "[NKG]";
// Longer texts (a reply of a megabyte) are cut: a debug output line is for reading.
constexpr size_t kMaxText = 1024;

std::atomic<void (*)(const std::string& text)> g_sink{nullptr};

}  // namespace

void SendDiagnosticsTo(void (*sink)(const std::string& text)) { g_sink = sink; }

void Diagnostic(const char* format, ...) {
  char text[kMaxText];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);

  std::string line = text;
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  if (const auto sink = g_sink.load()) return sink(line);
  line = kPrefix + line + '\n';
  WriteDebugOutput(line);
  if (std::getenv("NUVCONNECT_DEBUG") != nullptr) std::fputs(line.c_str(), stderr);
}

}  // namespace Nuv::Platform
