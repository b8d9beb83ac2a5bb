// Calls of host code. What it throws passes through the library unchanged; a mark of the thread
// tells it from the library's own exceptions.
#ifndef NUV_JOB_HOST_CALL_H_
#define NUV_JOB_HOST_CALL_H_

#include <exception>

namespace Nuv::Connect {

// Whether the last call of host code on this thread was left by an exception.
inline bool& HostThrew() {
  thread_local bool threw = false;
  return threw;
}

template <class Callback, class... Arguments>
auto CallHost(Callback callback, Arguments... arguments) {
  struct Mark {
    ~Mark() { HostThrew() = std::uncaught_exceptions() > before; }
    const int before = std::uncaught_exceptions();
  };
  const Mark mark;
  return callback(arguments...);
}

}  // namespace Nuv::Connect

#endif  // NUV_JOB_HOST_CALL_H_
