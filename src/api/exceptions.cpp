#include "api/exceptions.h"

#include "command/reply_error.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

bool g_noExceptions = false;
std::atomic<NuvErrorCodeCallback> g_errorCode{nullptr};

namespace Nuv::Api {

int ResultOf(const std::exception& error) {
  const bool always = dynamic_cast<const Command::NoSerialNumber*>(&error) != nullptr;
  if (Connect::HostThrew() || !(g_noExceptions || always)) throw;
  const auto* const reply = dynamic_cast<const Command::ReplyError*>(&error);
  const int code = reply == nullptr ? 0 : reply->code();
  Platform::Diagnostic("F%d: %s", code, error.what());
  if (const NuvErrorCodeCallback callback = g_errorCode) {
    Connect::CallHost(callback, int{NUV_FAILED}, code);
  }
  return NUV_FAILED;
}

}  // namespace Nuv::Api
