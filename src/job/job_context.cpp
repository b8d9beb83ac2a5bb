#include "job/job_context.h"

namespace Nuv::Connect {

void HostCallbacks::ReportError(int result, int code) const {
  if (const NuvErrorCodeCallback callback = errorCode) CallHost(callback, result, code);
}

void HostCallbacks::ReportStart() const {
  if (const NuvSendDataStartCallback callback = sendStart) CallHost(callback);
}

void HostCallbacks::ReportSent(int total, int sent) const {
  if (const NuvSendDataUpdateCallback callback = sendUpdate) CallHost(callback, total, sent);
}

bool HostCallbacks::IsCancelled() const {
  const NuvSendDataCancelCallback callback = sendCancel;
  return callback != nullptr && CallHost(callback);
}

}  // namespace Nuv::Connect
