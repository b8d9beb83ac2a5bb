// Whether the printer really took a print job.
//
// The printer acknowledges no data, so a job can look sent although it has not all of it. So its
// job counter is read before and after.
#ifndef NUVCTL_JOB_CHECK_H_
#define NUVCTL_JOB_CHECK_H_

#include <optional>

#include "context.h"
#include "error.h"
#include "printers.h"
#include "transfer.h"

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
// and returns its index; for models that refuse the query until it prints, and returns nothing. A
// printer that does not answer is opened anew once. Throws CommandError saying that the printer did
// not take the job, or that this is not known.
std::optional<int> ConfirmJob(const Context& context, const Printer& printer, const JobMark& before,
                              int total);

// Whether the connection was lost within the job, so that the printer may have all of it or a part.
bool IsCut(const Transfer& transfer);

// Connects to the printer again after a cut, and waits a few seconds until it shows a job other
// than `before` with all bytes; returns its index. Throws `failure`, with what the printer has and
// what is left to do, when it does not.
int ConfirmCutJob(const Context& context, const Printer& printer, const JobMark& before,
                  const Transfer& transfer, CommandError failure);

// The failure of a job that the printer refused to open.
CommandError JobRefused(CommandError failure);

}  // namespace nuvctl

#endif  // NUVCTL_JOB_CHECK_H_
