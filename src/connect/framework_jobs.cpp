// Jobs, and what the host is told of them.

#include "connect/connecting_framework.h"
#include "job/gcode_job.h"
#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

int ConnectingFramework::SendPrintFile(std::wstring path, NuvJobProgressCallback progress) {
  return Connect::SendPrintFile(NewJobContext(), path, progress);
}

int ConnectingFramework::SendGCodeFile(const std::wstring& path, NuvJobProgressCallback progress) {
  return Connect::SendGCodeFile(NewJobContext(), path, progress);
}

int ConnectingFramework::RegisterPrintingInfoCallback(NuvPrintingInfoCallback callback,
                                                      uint32_t intervalMs) {
  return statusHandler_.Start(callback, intervalMs) ? NUV_OK : NUV_FAILED;
}

int ConnectingFramework::RegisterErrorCodeCallback(NuvErrorCodeCallback callback) {
  callbacks_.errorCode = callback;
  return NUV_OK;
}

int ConnectingFramework::RegisterSendDataStartCallback(NuvSendDataStartCallback callback) {
  callbacks_.sendStart = callback;
  return NUV_OK;
}

int ConnectingFramework::RegisterSendDataUpdateCallback(NuvSendDataUpdateCallback callback) {
  callbacks_.sendUpdate = callback;
  return NUV_OK;
}

int ConnectingFramework::RegisterSendDataCancelCallback(NuvSendDataCancelCallback callback) {
  callbacks_.sendCancel = callback;
  return NUV_OK;
}

}  // namespace Nuv::Connect
