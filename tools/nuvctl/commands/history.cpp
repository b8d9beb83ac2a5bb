#include <CLI/CLI.hpp>
#include <limits>
#include <memory>
#include <optional>

#include "commands/commands.h"
#include "commands/settings.h"
#include "format.h"
#include "state.h"

namespace NuvCtl {
namespace {

using nuv::JobRecord;

constexpr int kUsualJobs = 10;

struct Wanted {
  int last = kUsualJobs;
  std::optional<int> mark;
  bool whole = false;
};

// One column of the table, and a key for scripts.
struct Column {
  const char* head;
  const char* key;
  std::optional<int> JobRecord::*number;
};

constexpr Column kColumns[] = {
    {"MIN", "minutes", &JobRecord::minutes},
    {"LAYERS", "layers", &JobRecord::layers},
    {"LAYER-UM", "layer_um", &JobRecord::layerThicknessUm},
    {"EXPOSE-MS", "exposure_ms", &JobRecord::exposureMs},
    {"BOTTOM-MS", "bottom_exposure_ms", &JobRecord::bottomExposureMs},
    {"POWER-%", "laser_power_percent", &JobRecord::laserPowerPercent},
    {"ML", "resin_ml", &JobRecord::resinMl},
};

nlohmann::ordered_json JobJson(const JobRecord& job) {
  nlohmann::ordered_json json = {{"index", job.index}};
  const auto add = [&json](const char* key, const std::optional<std::string>& text) {
    if (text) json[key] = *text;
  };
  add("name", job.name);
  if (job.result) {
    json["result"] = JobResultName(*job.result);
    json["result_number"] = static_cast<int>(*job.result);
  }
  add("started", job.started);
  add("ended", job.ended);
  add("resin_code", job.resinCode);
  add("lot", job.resinLot);
  for (const Column& column : kColumns) {
    if (job.*column.number) json[column.key] = *(job.*column.number);
  }
  return json;
}

// At most `count` jobs from index `newest` downwards; fewer when the printer does not know one,
// because it then knows none before it either.
std::vector<JobRecord> ReadNewestJobs(Target& target, int newest, int count) {
  std::vector<JobRecord> jobs;
  for (int index = newest; index > 0 && newest - index < count; --index) {
    const auto job =
        target.Try("Reading job " + std::to_string(index), &nuv::Printer::GetJobRecord, index);
    if (!job) break;
    jobs.push_back(*job);
  }
  return jobs;
}

std::string JobsTable(const std::vector<JobRecord>& jobs, bool whole) {
  TableRow head = {"INDEX", "NAME", "RESULT", "STARTED", "ENDED"};
  const size_t numbers = whole ? std::size(kColumns) : 1;
  for (size_t i = 0; i < numbers; ++i) head.emplace_back(kColumns[i].head);
  if (whole) head.insert(head.end(), {"RESIN", "LOT"});
  std::vector<TableRow> rows;
  for (const JobRecord& job : jobs) {
    TableRow row = {std::to_string(job.index), job.name.value_or(""),
                    job.result ? JobResultName(*job.result) : "",
                    FormatStamp(job.started.value_or("")), FormatStamp(job.ended.value_or(""))};
    for (size_t i = 0; i < numbers; ++i) {
      const std::optional<int>& number = job.*kColumns[i].number;
      row.push_back(number ? std::to_string(*number) : "");
    }
    if (whole) row.insert(row.end(), {job.resinCode.value_or(""), job.resinLot.value_or("")});
    rows.push_back(row);
  }
  return FormatTable(head, rows);
}

Report ShowMark(const int& index) {
  FieldReport report;
  report.AddNumber("Last job read by a host", "last_updated", index);
  return report.Finish();
}

const Setting<int> kMark = {
    "the index of the last job read",
    "It cannot be beyond the last job ('nuvctl jobs'), and not every model keeps a history.",
    &nuv::Printer::SetLastReadJob,
    &nuv::Printer::GetLastReadJob,
    Equal<int>,
    ShowMark};

// Adds the current or last job, which is told by models without a history too. Its index.
int AddCurrent(Target& target, FieldReport& report) {
  const auto current = target.Try("Reading the last job", &nuv::Printer::GetJob);
  if (!current || !current->index) return 0;
  report.AddNumber("Current or last job", "current/index", current->index);
  report.AddNumber("Received for it", "current/bytes", current->bytes, " bytes");
  return *current->index;
}

void AddCounts(Target& target, FieldReport& report) {
  const nuv::JobCounts counts =
      target.Ask("Reading the job history", &nuv::Printer::GetJobCounts, false);
  report.AddNumber("Jobs started", "counters/started", counts.started);
  report.AddNumber("Jobs finished", "counters/finished", counts.finished);
  report.AddNumber("Jobs cancelled", "counters/cancelled", counts.cancelled);
  report.AddNumber("Jobs failed", "counters/failed", counts.failed);
  report.AddNumber(
      "Last job read by a host", "last_updated",
      target.Try("Reading the index of the last job read", &nuv::Printer::GetLastReadJob));
}

Report RunJobs(const Context& context, const Wanted& wanted) {
  if (wanted.mark) {
    Target target = OpenToChange(context);
    return ShowOrSet(kMark, target, wanted.mark);
  }
  Target target = OpenTarget(context);
  FieldReport fields;
  const int newest = AddCurrent(target, fields);
  try {
    AddCounts(target, fields);
  } catch (CommandError& error) {
    error.shown = fields.Finish();
    error.shownIsResult = true;
    throw;
  }
  Report report = fields.Finish();
  const std::vector<JobRecord> jobs = ReadNewestJobs(target, newest, wanted.last);
  report.json["jobs"] = nlohmann::ordered_json::array();
  for (const JobRecord& job : jobs) report.json["jobs"].push_back(JobJson(job));
  if (!jobs.empty()) report.text += '\n' + JobsTable(jobs, wanted.whole);
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
  app.add_flag("--long", wanted->whole, "All that the printer tells of each");
  app.add_option("--mark", wanted->mark, "Note this job as the last one that a host has read")
      ->type_name("INDEX")
      ->check(CLI::Range(0, kMost).description(""))
      ->excludes(last);
  return [wanted](const Context& context) { return RunJobs(context, *wanted); };
}

}  // namespace

Subcommands HistoryCommands() {
  return {{"jobs", "Show the counts of jobs and the newest jobs", "nuvctl jobs --last 20",
           DeclareJobs}};
}

}  // namespace NuvCtl
