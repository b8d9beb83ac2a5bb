// What concerns the library as a whole.

#include "printer/failure.h"
#include "printer/log.h"

using namespace Nuv::Printer;

const char* nuv_result_text(nuv_result result) {
  switch (result) {
    case NUV_RESULT_OK:
      return "done";
    case NUV_RESULT_INVALID_ARGUMENT:
      return "an argument is not valid";
    case NUV_RESULT_BAD_HANDLE:
      return "the handle is not valid";
    case NUV_RESULT_BUSY:
      return "this program is using it already";
    case NUV_RESULT_NOT_FOUND:
      return "no such printer was found";
    case NUV_RESULT_UNREACHABLE:
      return "the printer cannot be reached";
    case NUV_RESULT_NO_ANSWER:
      return "the printer did not answer";
    case NUV_RESULT_LOST:
      return "the connection was lost";
    case NUV_RESULT_UNREADABLE:
      return "the printer's answer cannot be read";
    case NUV_RESULT_REFUSED:
      return "the printer refused";
    case NUV_RESULT_TIME_LIMIT:
      return "the time limit has passed";
    case NUV_RESULT_CANCELLED:
      return "it was cancelled";
    case NUV_RESULT_BAD_FILE:
      return "the file cannot be read, or is damaged";
    case NUV_RESULT_NOT_FIT:
      return "the file is not for this printer, or not now";
    case NUV_RESULT_UNCONFIRMED:
      return "whether the printer took it is not known";
    case NUV_RESULT_TOO_SMALL:
      return "the buffer is too small";
    case NUV_RESULT_SYSTEM:
      return "the system lacks something";
    default:
      return "an unknown result";
  }
}

uint32_t nuv_version(void) { return NUV_PRINTER_VERSION; }

nuv_result nuv_log_to(int32_t level, nuv_log_function function, void* user, nuv_release release) {
  return Guarded(nullptr, [&] { SetLog(level, function, user, release); });
}
