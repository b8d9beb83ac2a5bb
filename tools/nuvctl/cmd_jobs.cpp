#include <CLI/CLI.hpp>
#include <limits>

#include "field_report.h"
#include "job_check.h"
#include "job_history.h"
#include "setting.h"
#include "table.h"

namespace nuvctl {
namespace {

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
  OpenPrinter(context);
  if (wanted.mark) return ShowOrSet(kMark, wanted.mark);
  FieldReport fields;
  const int newest = AddCurrent(fields);
  try {
    AddCounters(fields);
  } catch (CommandError& error) {
    error.shown = fields.Finish();
    error.shown_is_result = true;
    throw;
  }
  Report report = fields.Finish();
  const std::vector<Job> jobs = ReadNewestJobs(newest, wanted.last);
  report.json["jobs"] = JobsJson(jobs);
  if (!jobs.empty()) report.text += '\n' + JobsTable(jobs);
  return report;
}

}  // namespace

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

}  // namespace nuvctl
