#include "command/code_procs.h"

#include <cstdio>

#include "command/decimal.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

std::vector<std::string> OpeningParameters(const JobOpening& job) {
  using Command::Fixed;
  return {
      std::to_string(job.dataBytes),    std::to_string(job.layers),  Fixed(job.layerThicknessMm),
      std::to_string(job.printMinutes), Fixed(job.resinMl),          Fixed(job.exposureS),
      Fixed(job.bottomExposureS),       Fixed(job.liftMm),           Fixed(job.liftMmPerS),
      Fixed(job.retractMmPerS),         Fixed(job.laserPowerPercent)};
}

std::string Hexadecimal(const std::vector<uint8_t>& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
    text += digits;
  }
  return text;
}

}  // namespace

int32_t CodeProc::Process(std::vector<std::string>& output) {
  output.clear();
  accepted_ = false;
  const std::unique_ptr<Command::CommandBase> command = MakeCommand();
  command->Bind(context_.channel, context_.clock);
  command->set_parameters(Parameters());
  command->set_result_callback(
      [&](int32_t /*code*/, int32_t /*replyCode*/, bool ok, std::vector<std::string> values) {
        accepted_ = ok;
        output = std::move(values);
      });
  code_ = command->GetCode();
  const Command::TransactionStatus status = command->Execute();
  sentAgain_ = command->sent_again();
  fields_ = command->result();
  if (status == Command::kReplied) return NUV_OK;
  accepted_ = false;
  if (context_.errorCallback) context_.errorCallback(static_cast<ConnectError>(status), code_);
  return NUV_FAILED;
}

int32_t CodeProc::ProcessAccepted(std::vector<std::string>& output) {
  const int32_t result = Process(output);
  if (result != NUV_OK || accepted_) return result;
  if (context_.errorCallback) context_.errorCallback(kErrorRefused, code_);
  return NUV_PRINTER_REFUSED;
}

F103proc::F103proc(ProcContext context, const JobOpening& job)
    : ParameterProcOf(std::move(context), OpeningParameters(job)) {}

F500proc::F500proc(ProcContext context, const JobOpening& job, const std::string& fileName)
    : ParameterProcOf(std::move(context), [&] {
        std::vector<std::string> parameters = OpeningParameters(job);
        parameters.push_back(fileName);
        return parameters;
      }()) {}

F141Proc::F141Proc(ProcContext context, uint32_t bytes, const std::string& fileName)
    : ParameterProcOf(std::move(context), {std::to_string(bytes) + "," + fileName}) {}

F188Proc::F188Proc(ProcContext context, const std::string& fileName)
    : ParameterProcOf(std::move(context), {fileName}) {}

F355proc::F355proc(ProcContext context, const std::string& materialId, const std::string& projectId)
    : ParameterProcOf(std::move(context), {materialId, projectId}) {}

F367proc::F367proc(ProcContext context, const std::string& fileName)
    : ParameterProcOf(std::move(context), {fileName}) {}

F501proc::F501proc(ProcContext context, uint32_t bytes, const std::string& name)
    : ParameterProcOf(std::move(context), {std::to_string(bytes), name}) {}

F508proc::F508proc(ProcContext context, uint64_t bytes, const std::vector<uint8_t>& digest,
                   const std::string& fileName)
    : ParameterProcOf(std::move(context), {std::to_string(bytes), Hexadecimal(digest), fileName}) {}

}  // namespace Nuv::Connect
