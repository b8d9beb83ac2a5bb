#include "job_history.h"

#include <optional>

#include "library.h"
#include "table.h"
#include "text.h"

namespace nuvctl {
namespace {

std::string ResultName(int result) {
  constexpr const char* kNames[] = {"finished", "cancelled", "failed", "not ended"};
  if (result >= 0 && static_cast<size_t>(result) < std::size(kNames)) return kNames[result];
  return "unknown (" + std::to_string(result) + ")";
}

// Nothing when the printer does not know the job.
std::optional<Job> ReadJob(int index) {
  Job job;
  job.index = index;
  TextBuffer name, resin_code, started, ended, lot;
  const std::string action = "Reading job " + std::to_string(index);
  const bool known =
      Answered(API_GetJobInfo1(index, name.Data(), resin_code.Data(), started.Data()), action) &&
      Answered(API_GetJobInfo2(index, &job.layers, &job.minutes, &job.resin_ml, &job.result),
               action) &&
      Answered(API_GetJobInfo3(index, &job.layer_um, &job.exposure_ms, &job.bottom_exposure_ms,
                               &job.laser_power_percent),
               action) &&
      Answered(API_GetJobInfo4(index, ended.Data(), lot.Data()), action);
  if (!known) return std::nullopt;
  job.name = name.Text();
  job.resin_code = resin_code.Text();
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
                                 {"resin_code", job.resin_code},
                                 {"lot", job.lot},
                                 {"resin_ml", job.resin_ml},
                                 {"layer_um", job.layer_um},
                                 {"exposure_ms", job.exposure_ms},
                                 {"bottom_exposure_ms", job.bottom_exposure_ms},
                                 {"laser_power_percent", job.laser_power_percent}};
  if (job.ended != "-") json["ended"] = job.ended;
  return json;
}

}  // namespace

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
                    std::to_string(job.layers), std::to_string(job.layer_um),
                    std::to_string(job.exposure_ms), std::to_string(job.bottom_exposure_ms),
                    std::to_string(job.laser_power_percent), job.resin_code, job.lot,
                    std::to_string(job.resin_ml)});
  }
  return FormatTable({"INDEX", "NAME", "RESULT", "STARTED", "ENDED", "MIN", "LAYERS", "LAYER-UM",
                      "EXPOSE-MS", "BOTTOM-MS", "POWER-%", "RESIN", "LOT", "ML"},
                     rows);
}

}  // namespace nuvctl
