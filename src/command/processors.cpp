#include "command/processors.h"

#include <cstdio>

#include "command/reply_views.h"

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

int GeneralCommandProc::Process(std::vector<std::string>& output) {
  outcome_ = RunCommand(*command_, errorCallback_, Refusal::kFails);
  output = std::move(outcome_.values);
  return outcome_.result;
}

int CodeProc::Keep(Refusal refusal, std::vector<std::string>& output) {
  outcome_ = Run(refusal);
  output = std::move(outcome_.values);
  return outcome_.result;
}

F103proc::F103proc(const CommandRunner& runner, const JobOpening& job)
    : ProcOf(runner, OpeningParameters(job)) {}

F500proc::F500proc(const CommandRunner& runner, const JobOpening& job, const std::string& fileName)
    : ProcOf(runner, [&] {
        std::vector<std::string> parameters = OpeningParameters(job);
        parameters.push_back(fileName);
        return parameters;
      }()) {}

F141Proc::F141Proc(const CommandRunner& runner, uint32_t bytes, const std::string& fileName)
    : ProcOf(runner, {std::to_string(bytes) + "," + fileName}) {}

F188Proc::F188Proc(const CommandRunner& runner, const std::string& fileName)
    : ProcOf(runner, {fileName}) {}

F355proc::F355proc(const CommandRunner& runner, const std::string& materialId,
                   const std::string& projectId)
    : ProcOf(runner, {materialId, projectId}) {}

F367proc::F367proc(const CommandRunner& runner, const std::string& fileName)
    : ProcOf(runner, {fileName}) {}

F501proc::F501proc(const CommandRunner& runner, uint32_t bytes, const std::string& name)
    : ProcOf(runner, {std::to_string(bytes), name}) {}

F508proc::F508proc(const CommandRunner& runner, uint64_t bytes, const std::vector<uint8_t>& digest,
                   const std::string& fileName)
    : ProcOf(runner, {std::to_string(bytes), Hexadecimal(digest), fileName}) {}

}  // namespace Nuv::Connect
