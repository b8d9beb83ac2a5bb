// The commands that jobs of all families share.
#ifndef NUV_JOB_PRINTER_EXCHANGE_H_
#define NUV_JOB_PRINTER_EXCHANGE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "command/processors.h"
#include "job/job_context.h"

namespace Nuv::Connect {

// Bytes free in the printer's receive buffer: key S of command 503 for the machine IDs of
// Android-board printers, of command 117 for every other. 0 when the query fails, so that the
// sender asks again. Throws what ParseDecimal throws.
uint64_t QueryFreeBufferSize(const JobContext& context, const std::string& machineId);

// The printer's state, key S of command 102, as text; nothing when the query fails, which is told
// to the error-code callback. Throws what ParseDecimal throws.
std::optional<std::string> QueryState(const JobContext& context);

// Runs `opening`, which opens a job. 0, 1 it failed, 29 the printer refused: it would take what
// follows for commands. `before`: its state before, of this call. When a command that was sent
// again is refused, the printer may have taken it the first time; if it was idle then and receives
// now, it is ordered to abandon that job.
int OpenJob(const JobContext& context, CodeProc& opening, const std::string& before);

// Orders the printer to abandon the job. Its answer changes nothing. A job that can be interrupted
// waits 0.4 s for it and tells the host whether the printer accepted.
void AbandonJob(const JobContext& context);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_PRINTER_EXCHANGE_H_
