// Sending a job.

#include <algorithm>
#include <cmath>

#include "nuvsim/command_table.h"

namespace nuvsim {
namespace {

constexpr double kLargestAmount = 1e9;  // of anything that a host announces
constexpr int kFreeJobMemoryMb = 512;

// What 103 announces, in the order of its parameters. Lift and speeds are checked to be numbers
// but have nowhere to go.
struct AnnouncedRow {
  char tag;
  double JobAnnouncement::*amount;
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

std::optional<JobAnnouncement> ReadAnnouncement(const Request& request) {
  const auto& parameters = request.parameters;
  if (parameters.size() != std::size(kAnnounced)) return std::nullopt;
  JobAnnouncement job;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const AnnouncedRow& row = kAnnounced[i];
    const auto number = ParseNumber<double>(parameters[i].substr(1));
    if (parameters[i].front() != row.tag || !number || !std::isfinite(*number)) return std::nullopt;
    if (row.amount != nullptr) job.*row.amount = std::clamp(*number, 0.0, kLargestAmount);
  }
  const auto bytes = ParseNumber<std::uint64_t>(parameters[0].substr(1));
  const auto layers = ParseNumber<std::uint32_t>(parameters[1].substr(1));
  if (!bytes || !layers) return std::nullopt;
  job.bytes = *bytes;
  job.layers = *layers;
  return job;
}

std::string OpenJob(Machine& machine, const Request& request) {
  const auto job = ReadAnnouncement(request);
  if (job && machine.OpenJob(*job)) return "OK";
  return "NG " + StateField(machine);
}

std::string AbandonJob(Machine& machine, const Request& request) {
  if (request.parameters != std::vector<std::string_view>{"S2"}) return "NG";
  machine.AbandonJob();
  return "OK";
}

std::string JobTotals(Machine& machine, const Request&) {
  const JobRecord* job = machine.LastJob();
  if (job == nullptr) return "OK L:0 T:0";
  return "OK L:" + std::to_string(job->announced.layers) +
         " T:" + std::to_string(std::llround(job->announced.minutes)) + " R:" + job->name;
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
  const std::size_t end = both ? both->find('=') : std::string_view::npos;
  if (end == 0 || end == std::string_view::npos) return "NG";
  return "OK M:" + std::string(both->substr(0, end));
}

std::string DentalFileName(Machine&, const Request& request) {
  const auto name = Behind("=", request.rest.value_or(""));
  return name && !name->empty() ? "OK N:" + std::string(*name) : "NG";
}

}  // namespace

const CommandTable& JobCommands() {
  static const CommandTable table = {
      {103, Feature::kAll, OpenJob},
      {104, Feature::kAll, AbandonJob},
      {107, Feature::kAll, JobTotals},
      {117, Feature::kAll, FreeBuffer},
      {353, Feature::kDental, DentalReadiness},
      {355, Feature::kDental, DentalMaterial},
      {367, Feature::kDental, DentalFileName},
      {503, Feature::kAndroid, FreeBuffer},
  };
  return table;
}

}  // namespace nuvsim
