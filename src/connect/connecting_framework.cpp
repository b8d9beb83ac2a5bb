#include "connect/connecting_framework.h"

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

int ConnectingFramework::Fail(int result, int code) {
  callbacks_.ReportError(result, code);
  return result;
}

int ConnectingFramework::ExecuteCommand(int code, const std::vector<std::string>& parameters,
                                        std::map<std::string, std::string>& reply) {
  reply.clear();
  Outcome outcome = Commands().Run(code, parameters);
  reply = std::move(outcome.fields);
  return outcome.result;
}

}  // namespace Nuv::Connect
