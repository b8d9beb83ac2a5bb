// Sending a job.

#include <algorithm>
#include <cmath>

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr double kLargestAmount = 1e9;  // of anything that a host announces
constexpr int kFreeJobMemoryMb = 512;

// What 103 announces, in the order of its parameters. Lift and speeds are checked to be numbers
// but have nowhere to go.
using Amount = double JobAnnouncement::*;
struct AnnouncedRow {
  char tag;
  Amount amount;
};

constexpr AnnouncedRow kAnnounced[] = {
    {'S', nullptr},
    {'L', nullptr},
    {'T', &JobAnnouncement::layerMm},
    {'R', &JobAnnouncement::minutes},
    {'V', &JobAnnouncement::resinMl},
    {'C', &JobAnnouncement::exposureSeconds},
    {'E', &JobAnnouncement::bottomExposureSeconds},
    {'H', nullptr},
    {'Y', nullptr},
    {'U', nullptr},
    {'P', &JobAnnouncement::laserPower},
};

using Parameters = std::vector<std::string_view>;

std::optional<JobAnnouncement> ReadAnnouncement(const Parameters& parameters) {
  if (parameters.size() != std::size(kAnnounced)) return std::nullopt;
  JobAnnouncement job;
  for (size_t i = 0; i < parameters.size(); ++i) {
    const AnnouncedRow& row = kAnnounced[i];
    const auto number = ParseNumber<double>(parameters[i].substr(1));
    if (parameters[i].front() != row.tag || !number || !std::isfinite(*number)) return std::nullopt;
    if (row.amount != nullptr) job.*row.amount = std::clamp(*number, 0.0, kLargestAmount);
  }
  const auto bytes = ParseNumber<uint64_t>(parameters[0].substr(1));
  const auto layers = ParseNumber<uint32_t>(parameters[1].substr(1));
  if (!bytes || !layers) return std::nullopt;
  job.bytes = *bytes;
  job.layers = *layers;
  return job;
}

// Key, material record and slice record come behind the opening of a dental job.
std::string OpenJob(Machine& machine, const Request& request) {
  const auto job = ReadAnnouncement(request.parameters);
  if (!job || !machine.OpenJob(*job)) return "NG " + StateField(machine);
  if (machine.GetModel().Has(Feature::kDental)) {
    machine.GetIntake().ExpectHeader(machine.LastJob()->index, true, {"L102", "L103"});
  }
  return "OK";
}

// What stands in the angle brackets of the last parameter, " N<...>", if it is there and not empty.
std::optional<std::string> BracketedName(const Request& request) {
  const std::string_view rest = request.rest.value_or("");
  const size_t start = rest.find(" N<");
  if (start == std::string_view::npos || rest.back() != '>') return std::nullopt;
  const std::string_view name = rest.substr(start + 3, rest.size() - start - 4);
  return name.empty() ? std::nullopt : std::optional<std::string>(name);
}

// As many of the leading parameters as there are before the name, which may hold blanks.
Parameters BeforeName(const Request& request) {
  const auto& all = request.parameters;
  const auto name = std::find_if(
      all.begin(), all.end(), [](std::string_view each) { return Behind("N<", each).has_value(); });
  return {all.begin(), name};
}

// A file name as name of a job, which stands in answers whose fields end at blanks.
std::string JobName(std::string fileName) {
  for (char& each : fileName) {
    if (each == ' ' || each == ':' || each == '=') each = '_';
  }
  return fileName;
}

std::string OpenBoardJob(Machine& machine, const Request& request) {
  const auto name = BracketedName(request);
  const auto job = ReadAnnouncement(BeforeName(request));
  if (!name || !job || !machine.OpenJob(*job, JobName(*name))) return "NG " + StateField(machine);
  machine.GetIntake().ExpectHeader(machine.LastJob()->index, false, {"L101", "L102", "L103"});
  return "OK";
}

std::string AnnounceThumbnail(Machine& machine, const Request& request) {
  const auto name = BracketedName(request);
  const Parameters before = BeforeName(request);
  if (!name || before.size() != 1 || before[0].front() != 'S') return "NG";
  const auto bytes = ParseNumber<uint64_t>(before[0].substr(1));
  if (bytes.value_or(0) == 0) return "NG";
  machine.GetIntake().ExpectFrames("thumbnail", *bytes, *name);
  return "OK";
}

std::string AnnouncePrintFile(Machine& machine, const Request& request) {
  constexpr size_t kDigestDigits = 40;
  const auto name = BracketedName(request);
  const Parameters before = BeforeName(request);
  if (!name || before.size() != 2 || before[0].front() != 'S' || before[1].front() != 'V') {
    return "NG";
  }
  const auto bytes = ParseNumber<uint64_t>(before[0].substr(1));
  const std::string_view digest = before[1].substr(1);
  const bool isDigest =
      digest.size() == kDigestDigits &&
      digest.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
  if (!bytes || !isDigest) return "NG";
  machine.GetIntake().NotePrintFile(*bytes, *name, std::string(digest));
  return "OK";
}

std::string AbandonJob(Machine& machine, const Request& request) {
  if (request.parameters != std::vector<std::string_view>{"S2"}) return "NG";
  machine.AbandonJob();
  return "OK";
}

std::string FreeBuffer(Machine& machine, const Request&) {
  return "OK S:" + std::to_string(machine.FreeBytes());
}

std::string DentalReadiness(Machine& machine, const Request&) {
  return "OK " + StateField(machine) + " M:" + std::to_string(kFreeJobMemoryMb);
}

// "M<material>=<project>"; either may hold blanks.
std::string DentalMaterial(Machine&, const Request& request) {
  const auto both = Behind("M", request.rest.value_or(""));
  const size_t end = both ? both->find('=') : std::string_view::npos;
  if (end == 0 || end == std::string_view::npos) return "NG";
  return "OK M:" + std::string(both->substr(0, end));
}

std::string DentalFileName(Machine&, const Request& request) {
  const auto name = Behind("=", request.rest.value_or(""));
  return name && !name->empty() ? "OK N:" + std::string(*name) : "NG";
}

}  // namespace

const CommandTable& JobCommands() {
  static const CommandTable kTable = {
      {103, Feature::kAll, OpenJob},           {104, Feature::kAll, AbandonJob},
      {117, Feature::kAll, FreeBuffer},        {353, Feature::kDental, DentalReadiness},
      {355, Feature::kDental, DentalMaterial}, {367, Feature::kDental, DentalFileName},
      {500, Feature::kAndroid, OpenBoardJob},  {501, Feature::kAndroid, AnnounceThumbnail},
      {503, Feature::kAndroid, FreeBuffer},    {508, Feature::kAndroid, AnnouncePrintFile},
  };
  return kTable;
}

}  // namespace NuvSim
