#include <CLI/CLI.hpp>
#include <limits>
#include <memory>
#include <optional>

#include "commands/commands.h"
#include "commands/settings.h"
#include "format.h"
#include "printer.h"

namespace NuvCtl {
namespace {

struct Job {
  int index = 0;
  std::string name, resinCode, lot;
  std::string started, ended;  // as the printer writes them; `ended` is "-" until the job has
  int result = 0;              // 0 finished, 1 cancelled, 2 failed, 3 not ended
  int layers = 0;
  int minutes = 0;
  int resinMl = 0;
  int layerUm = 0;
  int exposureMs = 0;
  int bottomExposureMs = 0;
  int laserPowerPercent = 0;
};

std::string ResultName(int result) {
  constexpr const char* kNames[] = {"finished", "cancelled", "failed", "not ended"};
  return FormatName(kNames, result);
}

// Nothing when the printer does not know the job.
std::optional<Job> ReadJob(int index) {
  Job job;
  job.index = index;
  TextBuffer name, resinCode, started, ended, lot;
  const std::string action = "Reading job " + std::to_string(index);
  const bool known =
      Answered(API_GetJobInfo1(index, name.Data(), resinCode.Data(), started.Data()), action) &&
      Answered(API_GetJobInfo2(index, &job.layers, &job.minutes, &job.resinMl, &job.result),
               action) &&
      Answered(API_GetJobInfo3(index, &job.layerUm, &job.exposureMs, &job.bottomExposureMs,
                               &job.laserPowerPercent),
               action) &&
      Answered(API_GetJobInfo4(index, ended.Data(), lot.Data()), action);
  if (!known) return std::nullopt;
  job.name = name.Text();
  job.resinCode = resinCode.Text();
  job.started = started.Text();
  job.ended = ended.Text();
  job.lot = lot.Text();
  return job;
}

nlohmann::ordered_json JobJson(const Job& job) {
  nlohmann::ordered_json json = {{"index", job.index},
                                 {"name", job.name},
                                 {"result", ResultName(job.result)},
                                 {"result_number", job.result},
                                 {"started", job.started},
                                 {"layers", job.layers},
                                 {"minutes", job.minutes},
                                 {"resin_code", job.resinCode},
                                 {"lot", job.lot},
                                 {"resin_ml", job.resinMl},
                                 {"layer_um", job.layerUm},
                                 {"exposure_ms", job.exposureMs},
                                 {"bottom_exposure_ms", job.bottomExposureMs},
                                 {"laser_power_percent", job.laserPowerPercent}};
  if (job.ended != "-") json["ended"] = job.ended;
  return json;
}

// At most `count` jobs from index `newest` downwards; fewer when the printer does not know one,
// because it then knows none before it either.
std::vector<Job> ReadNewestJobs(int newest, int count) {
  std::vector<Job> jobs;
  for (int index = newest; index > 0 && newest - index < count; --index) {
    const std::optional<Job> job = ReadJob(index);
    if (!job) break;
    jobs.push_back(*job);
  }
  return jobs;
}

nlohmann::ordered_json JobsJson(const std::vector<Job>& jobs) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Job& job : jobs) list.push_back(JobJson(job));
  return list;
}

std::string JobsTable(const std::vector<Job>& jobs) {
  std::vector<TableRow> rows;
  rows.reserve(jobs.size());
  for (const Job& job : jobs) {
    rows.push_back({std::to_string(job.index), job.name, ResultName(job.result),
                    FormatStamp(job.started), FormatStamp(job.ended), std::to_string(job.minutes),
                    std::to_string(job.layers), std::to_string(job.layerUm),
                    std::to_string(job.exposureMs), std::to_string(job.bottomExposureMs),
                    std::to_string(job.laserPowerPercent), job.resinCode, job.lot,
                    std::to_string(job.resinMl)});
  }
  return FormatTable({"INDEX", "NAME", "RESULT", "STARTED", "ENDED", "MIN", "LAYERS", "LAYER-UM",
                      "EXPOSE-MS", "BOTTOM-MS", "POWER-%", "RESIN", "LOT", "ML"},
                     rows);
}

constexpr int kUsualJobs = 10;

struct Wanted {
  int last = kUsualJobs;
  std::optional<int> mark;
};

Report ShowMark(const int& index) {
  FieldReport report;
  report.AddNumber("Last job read by a host", "last_updated", index);
  return report.Finish();
}

constexpr Setting<int> kMark = {
    "the index of the last job read",
    "It cannot be beyond the last job ('nuvctl jobs'), and not every model keeps a history.",
    [](const int& index) { return API_SetLastUpdatedIndex(index); },
    [](int& index) { return API_GetLastUpdatedIndex(&index); },
    Equal<int>,
    ShowMark};

// Adds the current or last job, which is told by models without a history too.
int AddCurrent(FieldReport& report) {
  const JobMark current = ReadJobMark();
  if (!current.known) return 0;
  report.AddNumber("Current or last job", "current/index", current.index);
  report.AddNumber("Received for it", "current/bytes", current.bytes, " bytes");
  return current.index;
}

void AddCounters(FieldReport& report) {
  constexpr int kAllJobs = 0;
  int started = 0;
  int finished = 0;
  int cancelled = 0;
  int failed = 0;
  CheckQuery(API_GetJobCounter(kAllJobs, &started, &finished, &cancelled, &failed),
             "Reading the job history");
  report.AddNumber("Jobs started", "counters/started", started);
  report.AddNumber("Jobs finished", "counters/finished", finished);
  report.AddNumber("Jobs cancelled", "counters/cancelled", cancelled);
  report.AddNumber("Jobs failed", "counters/failed", failed);
  int index = 0;
  if (Answered(API_GetLastUpdatedIndex(&index), "Reading the index of the last job read")) {
    report.AddNumber("Last job read by a host", "last_updated", index);
  }
}

Report RunJobs(Context& context, const Wanted& wanted) {
  OpenPrinter(context.choice);
  if (wanted.mark) return ShowOrSet(kMark, wanted.mark);
  FieldReport fields;
  const int newest = AddCurrent(fields);
  try {
    AddCounters(fields);
  } catch (CommandError& error) {
    error.shown = fields.Finish();
    error.shownIsResult = true;
    throw;
  }
  Report report = fields.Finish();
  const std::vector<Job> jobs = ReadNewestJobs(newest, wanted.last);
  report.json["jobs"] = JobsJson(jobs);
  if (!jobs.empty()) report.text += '\n' + JobsTable(jobs);
  return report;
}

Action DeclareJobs(CLI::App& app) {
  const auto wanted = std::make_shared<Wanted>();
  constexpr int kMost = std::numeric_limits<int>::max();
  CLI::Option* const last =
      app.add_option("--last", wanted->last, "How many of the newest jobs to list")
          ->type_name("N")
          ->check(CLI::Range(0, kMost).description(""))
          ->capture_default_str();
  app.add_option("--mark", wanted->mark, "Note this job as the last one that a host has read")
      ->type_name("INDEX")
      ->check(CLI::Range(0, kMost).description(""))
      ->excludes(last);
  return [wanted](Context& context) { return RunJobs(context, *wanted); };
}

}  // namespace

Subcommands HistoryCommands() {
  return {{"jobs", "Show the counts of jobs and the newest jobs", "nuvctl jobs --last 20",
           DeclareJobs}};
}

}  // namespace NuvCtl
