#include "job/job_context.h"

#include "job/host_call.h"

namespace Nuv::Connect {

void HostCallbacks::ReportError(int32_t result, int32_t code) const {
  if (const NuvErrorCodeCallback callback = errorCode) CallHost(callback, result, code);
}

void HostCallbacks::ReportStart() const {
  if (const NuvSendDataStartCallback callback = sendStart) CallHost(callback);
}

void HostCallbacks::ReportSent(int32_t total, int32_t sent) const {
  if (const NuvSendDataUpdateCallback callback = sendUpdate) CallHost(callback, total, sent);
}

bool HostCallbacks::IsCancelled() const {
  const NuvSendDataCancelCallback callback = sendCancel;
  return callback != nullptr && CallHost(callback);
}

ErrorCallback JobContext::MakeErrorCallback() const {
  return [&callbacks = callbacks](ConnectError error, int32_t code) {
    callbacks.ReportError(error, code);
  };
}

}  // namespace Nuv::Connect
