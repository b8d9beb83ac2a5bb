#include "connect/connecting_framework.h"

#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

ConnectingFramework::ConnectingFramework(Platform::Clock& clock, int replyTimeoutMs,
                                         std::unique_ptr<ConnectorBase> usb)
    : clock_(clock), connect_(replyTimeoutMs, std::move(usb)) {}

ConnectingFramework::~ConnectingFramework() = default;

IConnect* ConnectingFramework::GetConnect() { return &connect_; }

void ConnectingFramework::Close() { closing_ = true; }

int ConnectingFramework::SendPrintFile(std::wstring path, NuvJobProgressCallback progress) {
  return Connect::SendPrintFile(NewJobContext(), path, progress);
}

int ConnectingFramework::SendGCodeFile(const std::wstring& path, NuvJobProgressCallback progress) {
  return Connect::SendGCodeFile(NewJobContext(), path, progress);
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
