#ifndef NUV_PRINTER_FAILURE_H_
#define NUV_PRINTER_FAILURE_H_

#include <functional>
#include <string>

#include "command/reason.h"
#include "nuvprinter/nuvprinter.h"

namespace Nuv::Printer {

// Why a call fails. Thrown anywhere below the C functions, which make a result of it.
struct Failure {
  nuv_result result;
  std::string message;  // for a person; empty: that of the result
  int command = 0;      // the printer's command that failed
};

// `reason` is no kNone. A wait that was given up is CANCELLED; whether time was the cause, the
// call's limits know.
nuv_result ResultOf(Connect::Reason reason);

// Runs what a C function does, and makes a result of what it throws: in `error`, which may be null,
// and in the log.
nuv_result Guarded(nuv_error* error, const std::function<void()>& body);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_FAILURE_H_
