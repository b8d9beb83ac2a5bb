// How exceptions leave an export: unchanged or, for hosts that cannot catch them, as a result.
#ifndef NUV_API_EXCEPTIONS_H_
#define NUV_API_EXCEPTIONS_H_

#include <atomic>
#include <exception>

#include "job/host_call.h"
#include "nuvconnect/Callbacks.h"

// True while the library's exceptions become results; set by API_Initial.
extern bool g_noExceptions;

// The callback that is told of them: the last one registered through the exports.
extern std::atomic<NuvErrorCodeCallback> g_errorCode;

namespace Nuv::Api {

// To be called while `error` is handled: the result that it becomes (1), told to the error-code
// callback; else throws it again. What host code has thrown never becomes one. A printer that names
// no serial number always does: listings promise that result.
int ResultOf(const std::exception& error);

template <class Operation>
int Guarded(Operation&& operation) {
  Connect::HostThrew() = false;
  try {
    return operation();
  } catch (const std::exception& error) {
    return ResultOf(error);
  }
}

}  // namespace Nuv::Api

#endif  // NUV_API_EXCEPTIONS_H_
