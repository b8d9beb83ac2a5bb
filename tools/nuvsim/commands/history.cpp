// The jobs that the printer has had.

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr double kThousandths = 1000;  // of a millimetre, of a second

// The printer's own numbers.
enum class Result { kFinished = 0, kCancelled = 1, kFailed = 2, kNotEnded = 3 };

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysIn(int month, int year) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeap(year) ? 1 : 0);
}

// As on the wire: 20261121T103000. Parts of a second are left out. From 1970 on.
// By hand, since the C library's conversion shares one buffer between threads.
std::string FormatTime(CalendarTime time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
  int64_t day = seconds / kSecondsPerDay;  // from 1 January 1970
  const auto second = static_cast<int>(seconds % kSecondsPerDay);
  int year = 1970;
  int month = 1;
  for (; day >= (IsLeap(year) ? 366 : 365); ++year) day -= IsLeap(year) ? 366 : 365;
  for (; day >= DaysIn(month, year); ++month) day -= DaysIn(month, year);
  char text[64];
  std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02d", year, month,
                static_cast<int>(day) + 1, second / 3600, second / 60 % 60, second % 60);
  return text;
}

std::string Rounded(double value) { return std::to_string(std::llround(value)); }

Result ResultOf(const JobRecord& job) {
  if (job.status == JobStatus::kFinished) return Result::kFinished;
  return job.status == JobStatus::kAbandoned ? Result::kCancelled : Result::kNotEnded;
}

std::string JobReceipt(Machine& machine, const Request&) {
  const JobRecord* job = machine.LastJob();
  if (job == nullptr) return "OK I0 S0";
  return "OK I" + std::to_string(job->index) + " S" + std::to_string(job->receivedBytes);
}

std::string JobCounters(Machine& machine, const Request& request) {
  const auto kind = OnlyNumber(request, 'S');
  if (kind != 0 && kind != 1) return "NG";
  uint64_t started = 0, finished = 0, cancelled = 0, failed = 0;
  if (kind == 0) {
    const JobCounts& earlier = machine.Config().earlierJobs;
    finished = static_cast<uint64_t>(earlier.finished);
    cancelled = static_cast<uint64_t>(earlier.cancelled);
    failed = static_cast<uint64_t>(earlier.failed);
    started = finished + cancelled + failed;
  }
  const Counters& since = machine.JobCounters();
  return "OK S" + std::to_string(started + since.jobsAccepted) + " F" +
         std::to_string(finished + since.jobsFinished) + " C" +
         std::to_string(cancelled + since.jobsAbandoned) + " E" + std::to_string(failed);
}

std::string LastUpdatedIndex(Machine& machine, const Request&) {
  return "OK I" + std::to_string(machine.GetSettings().lastUpdatedIndex);
}

std::string SetLastUpdatedIndex(Machine& machine, const Request& request) {
  const JobRecord* last = machine.LastJob();
  const auto index = OnlyNumber(request, 'S');
  if (!index || *index < 0 || *index > (last == nullptr ? 0 : last->index)) return "NG";
  machine.GetSettings().lastUpdatedIndex = *index;
  return "OK";
}

std::string JobOrigin(const Machine& machine, const JobRecord& job) {
  return "N" + job.name + " C" + machine.Resin().code + " T" + FormatTime(job.started);
}

std::string JobExtent(const Machine&, const JobRecord& job) {
  return "L" + std::to_string(job.announced.layers) + " T" + Rounded(job.announced.minutes) + " V" +
         Rounded(job.announced.resinMl) + " R" + std::to_string(static_cast<int>(ResultOf(job)));
}

std::string JobExposure(const Machine&, const JobRecord& job) {
  return "T" + Rounded(job.announced.layerMm * kThousandths) + " E" +
         Rounded(job.announced.exposureSeconds * kThousandths) + " B" +
         Rounded(job.announced.bottomExposureSeconds * kThousandths) + " P" +
         Rounded(job.announced.laserPower);
}

std::string JobEnd(const Machine& machine, const JobRecord& job) {
  return "T" + (job.ended ? FormatTime(*job.ended) : "-") + " Q" + machine.Resin().lot;
}

// One of the four queries about a job in the history.
template <std::string (*Fields)(const Machine&, const JobRecord&)>
std::string JobQuery(Machine& machine, const Request& request) {
  const JobRecord* job = machine.Job(OnlyNumber(request, 'S').value_or(0));
  return job == nullptr ? "NG" : "OK " + Fields(machine, *job);
}

}  // namespace

const CommandTable& HistoryCommands() {
  static const CommandTable kTable = {
      {157, Feature::kAll, JobReceipt},
      {169, Feature::kHistory, JobCounters},
      {170, Feature::kHistory, LastUpdatedIndex},
      {171, Feature::kHistory, SetLastUpdatedIndex},
      {174, Feature::kHistory, JobQuery<JobOrigin>},
      {175, Feature::kHistory, JobQuery<JobExtent>},
      {176, Feature::kHistory, JobQuery<JobExposure>},
      {177, Feature::kHistory, JobQuery<JobEnd>},
  };
  return kTable;
}

}  // namespace NuvSim
