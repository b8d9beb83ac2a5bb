#include "job/job_context.h"

namespace Nuv::Connect {

void HostCallbacks::ReportError(int result, int code) {
  if (const NuvErrorCodeCallback callback = errorCode) CallHost(callback, result, code);
}

void HostCallbacks::ReportStart() {
  if (const NuvSendDataStartCallback callback = sendStart) CallHost(callback);
}

void HostCallbacks::ReportSent(int total, int sent) {
  if (const NuvSendDataUpdateCallback callback = sendUpdate) CallHost(callback, total, sent);
}

bool HostCallbacks::IsCancelled() {
  const NuvSendDataCancelCallback callback = sendCancel;
  return callback != nullptr && CallHost(callback);
}

}  // namespace Nuv::Connect
