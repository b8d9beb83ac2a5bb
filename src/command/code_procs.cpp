#include "command/code_procs.h"

#include <cstdio>

#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

// The decimal point is a point whatever the locale of the host program.
std::string Fixed(double number) {
  char text[400];  // the longest double has 309 digits before the point
  std::snprintf(text, sizeof text, "%f", number);
  for (char* c = text; *c != '\0'; ++c) {
    if (*c == ',') *c = '.';
  }
  return text;
}

}  // namespace

int32_t CodeProc::Process(std::vector<std::string>& output) {
  output.clear();
  const std::unique_ptr<Command::CommandBase> command = MakeCommand();
  command->Bind(context_.channel, context_.clock);
  command->set_parameters(Parameters());
  command->set_result_callback(
      [&output](int32_t /*code*/, int32_t /*replyCode*/, bool /*ok*/,
                std::vector<std::string> values) { output = std::move(values); });
  const Command::TransactionStatus status = command->Execute();
  if (status == Command::kReplied) return NUV_OK;
  if (context_.errorCallback) {
    context_.errorCallback(static_cast<ConnectError>(status), command->GetCode());
  }
  return NUV_FAILED;
}

std::vector<std::string> F103proc::Parameters() const {
  return {
      std::to_string(job_.dataBytes),    std::to_string(job_.layers),  Fixed(job_.layerThicknessMm),
      std::to_string(job_.printMinutes), Fixed(job_.resinMl),          Fixed(job_.exposureS),
      Fixed(job_.bottomExposureS),       Fixed(job_.liftMm),           Fixed(job_.liftMmPerS),
      Fixed(job_.retractMmPerS),         Fixed(job_.laserPowerPercent)};
}

}  // namespace Nuv::Connect
