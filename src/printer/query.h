// What the functions of all topics share: one call on one printer, and its answers' fields.
#ifndef NUV_PRINTER_QUERY_H_
#define NUV_PRINTER_QUERY_H_

#include <initializer_list>
#include <string>
#include <utility>

#include "printer/open_printers.h"
#include "printer/values.h"

namespace Nuv::Printer {

using Connect::Outcome;

// The fields that an answer has; the others stay unknown. Throws what ParseDecimal throws.
void Take(const Outcome& outcome, std::initializer_list<std::pair<const char*, nuv_text*>> fields);
void Take(const Outcome& outcome, std::initializer_list<std::pair<const char*, nuv_int*>> fields);

// An argument that becomes part of a line. Throws Failure for what would break it.
std::string Line(const char* text);

// Runs `body` with a session on the printer. `reads`: see Session. Throws what goes wrong.
template <class Body>
void WithSession(const nuv_printer* printer, const nuv_call* call, Body body, bool reads = false) {
  const std::shared_ptr<Device> device = OpenPrinters::Instance().Get(printer);
  CallLimits limits(call, 0, Platform::SystemClock());
  Session session(device, limits, reads);
  body(session);
}

// As WithSession, and a result of it.
template <class Body>
nuv_result OnPrinter(nuv_error* error, const nuv_printer* printer, const nuv_call* call,
                     Body body) {
  return Guarded(error, [&] { WithSession(printer, call, body); });
}

// As OnPrinter: `fill` fills a structure, which is handed out if it succeeds.
template <class T, class Fill>
nuv_result Answer(T* out, nuv_error* error, const nuv_printer* printer, const nuv_call* call,
                  Fill fill) {
  return Guarded(error, [&] {
    Prepare(out);
    WithSession(printer, call, [&](Session& session) {
      T value = NUV_INIT(T);
      fill(session, value);
      HandOut(value, out);
    });
  });
}

// The same for a number.
template <class Ask>
nuv_result AnswerNumber(int32_t* out, nuv_error* error, const nuv_printer* printer,
                        const nuv_call* call, Ask ask) {
  if (out != nullptr) *out = 0;
  return OnPrinter(error, printer, call, [&](Session& session) {
    if (out == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the number"};
    *out = ask(session);
  });
}

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_QUERY_H_
