// The jobs that a printer remembers.
#ifndef NUVCTL_JOB_HISTORY_H_
#define NUVCTL_JOB_HISTORY_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace nuvctl {

struct Job {
  int index = 0;
  std::string name, resin_code, lot;
  std::string started, ended;  // as the printer writes them; `ended` is "-" until the job has
  int result = 0;              // 0 finished, 1 cancelled, 2 failed, 3 not ended
  int layers = 0;
  int minutes = 0;
  int resin_ml = 0;
  int layer_um = 0;
  int exposure_ms = 0;
  int bottom_exposure_ms = 0;
  int laser_power_percent = 0;
};

// At most `count` jobs from index `newest` downwards; fewer when the printer does not know one,
// because it then knows none before it either. Throws CommandError when it does not answer.
std::vector<Job> ReadNewestJobs(int newest, int count);

nlohmann::ordered_json JobsJson(const std::vector<Job>& jobs);
std::string JobsTable(const std::vector<Job>& jobs);

}  // namespace nuvctl

#endif  // NUVCTL_JOB_HISTORY_H_
