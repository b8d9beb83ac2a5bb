#ifndef NUV_PRINTER_LOG_H_
#define NUV_PRINTER_LOG_H_

#include <string>

#include "nuvprinter/nuvprinter.h"

namespace Nuv::Printer {

// What the library has to say goes to the host's function from here, if it wants this level, or
// nowhere. The diagnostics of the layers below come in as warnings. `printer`: address or path,
// empty when it concerns none.
//
// Thread-safety: safe.
void Log(int level, const std::string& printer, const std::string& text);

// See nuv_log_to.
void SetLog(int level, nuv_log_function function, void* user, nuv_release release);

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_LOG_H_
