// Lines as they stand.

#include <cstring>

#include "printer/query.h"

using namespace Nuv::Printer;

nuv_result nuv_printer_raw(char* reply, size_t capacity, size_t* length, nuv_printer* printer,
                           const char* line, const nuv_call* call, nuv_error* error) {
  if (length != nullptr) *length = 0;
  return Guarded(error, [&] {
    if (reply == nullptr || length == nullptr || capacity == 0) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the reply"};
    }
    reply[0] = '\0';
    const std::string request = line == nullptr ? "" : Line(line) + "\r\n";
    std::string text;
    WithSession(
        printer, call, [&](Session& session) { text = session.Exchange(request).text; },
        line == nullptr);
    if (!text.empty() && text.back() == '\r') text.pop_back();
    *length = text.size();
    const size_t copied = std::min(text.size(), capacity - 1);
    std::memcpy(reply, text.data(), copied);
    reply[copied] = '\0';
    if (copied < text.size()) throw Failure{NUV_RESULT_TOO_SMALL, {}};
  });
}
