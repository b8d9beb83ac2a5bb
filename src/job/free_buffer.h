#ifndef NUV_JOB_FREE_BUFFER_H_
#define NUV_JOB_FREE_BUFFER_H_

#include <cstdint>
#include <string>

#include "job/job_context.h"

namespace Nuv::Connect {

// Bytes free in the printer's receive buffer: key S of command 503 for the machine IDs of
// Android-board printers, of command 117 for every other. 0 when the query fails, so that the
// sender asks again. Throws what ParseDecimal throws.
uint64_t QueryFreeBufferSize(const JobContext& context, const std::string& machineId);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_FREE_BUFFER_H_
