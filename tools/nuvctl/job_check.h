// Whether the printer really took a print job.
//
// A job can look sent although the printer has nothing of it: it may refuse the opening command
// unnoticed and then drop the data. So its job counter is read before and after.
#ifndef NUVCTL_JOB_CHECK_H_
#define NUVCTL_JOB_CHECK_H_

#include <optional>

#include "context.h"

namespace nuvctl {

// The printer's current or last job. `known` is false for models that refuse the query.
struct JobMark {
  bool known = false;
  int index = 0;
  int bytes = 0;  // received for it
};

// Throws CommandError when the printer does not answer.
JobMark ReadJobMark();

// Waits a few seconds until the printer shows a job other than `before` with exactly `total` bytes,
// and returns its index; for models that refuse the query until it prints, and returns nothing.
// Throws CommandError saying that the printer did not take the job.
std::optional<int> ConfirmJob(const Context& context, const JobMark& before, int total);

}  // namespace nuvctl

#endif  // NUVCTL_JOB_CHECK_H_
