#include "library.h"

#include "error.h"

namespace nuvctl {
namespace {

struct FailedCommand {
  int result = NUV_OK;
  int code = 0;
};

// The callback has no argument of the host's, so what it hears is kept here. All calls are made on
// the main thread, and the library calls back on the thread of the failing call.
FailedCommand g_failed;

void OnCommandFailed(int result, int code) { g_failed = {result, code}; }

// The command behind `result`, or 0: an earlier failure that was put up with is not its cause.
int CommandBehind(int result) {
  const bool by_transaction = g_failed.result < 0 && result == NUV_FAILED;
  return g_failed.result == result || by_transaction ? g_failed.code : 0;
}

}  // namespace

Library::Library() {
  g_failed = FailedCommand();
  API_Initial();
  API_RegisterErrorCodeCallback(OnCommandFailed);
}

Library::~Library() { API_Close(); }

CommandError FailureOf(int result, const std::string& action) {
  return ResultError(result, action, CommandBehind(result));
}

void Check(int result, const std::string& action) {
  if (result != NUV_OK) throw FailureOf(result, action);
}

}  // namespace nuvctl
