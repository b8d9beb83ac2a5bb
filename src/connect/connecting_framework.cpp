#include "connect/connecting_framework.h"

#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

ConnectingFramework::ConnectingFramework(Platform::Clock& clock, int replyTimeoutMs,
                                         std::unique_ptr<ConnectorBase> usb)
    : clock_(clock),
      channel_(std::make_shared<NuvConnect>(replyTimeoutMs, std::move(usb), clock)),
      jobState_(std::make_shared<JobState>()),
      statusHandler_(channel_, jobState_, clock) {}

// The status thread may run a job of the host's in its callback.
ConnectingFramework::~ConnectingFramework() {
  ConnectingFramework::Close();
  connect_.GiveUp();
}

IConnect* ConnectingFramework::GetConnect() { return &connect_; }

void ConnectingFramework::Close() { jobs_.closing.Raise(); }

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

int ConnectingFramework::ExecuteCommand(int code, const std::vector<std::string>& parameters,
                                        std::map<std::string, std::string>& reply) {
  reply.clear();
  Query query = NewQuery();
  const int result = query.Run(code, parameters);
  reply = query.Fields();
  return result;
}

}  // namespace Nuv::Connect
