#include "platform/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace Nuv::Platform {
namespace {

constexpr char kPrefix[] = "[NKG]";
// Longer texts (a reply of a megabyte) are cut: a debug output line is for reading.
constexpr size_t kMaxText = 1024;

}  // namespace

void Diagnostic(const char* format, ...) {
  char text[kMaxText];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);

  std::string line = kPrefix;
  line += text;
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
  }
  line += '\n';
  WriteDebugOutput(line);
  if (std::getenv("NUVCONNECT_DEBUG") != nullptr) std::fputs(line.c_str(), stderr);
}

}  // namespace Nuv::Platform
