#ifndef NUV_JOB_PRINT_JOB_H_
#define NUV_JOB_PRINT_JOB_H_

#include <cstdint>
#include <string>

#include "job/job_context.h"

namespace Nuv::Connect {

// Sends a print file: opening exchange, data lines, abandon command when cancelled. Blocks for the
// whole job; `progress` may be null. Results as at API_SendPrintFile. An exception of a malformed
// number in a reply passes through and leaves the link free.
int SendPrintFile(const JobContext& context, const std::wstring& path,
                  NuvJobProgressCallback progress);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_PRINT_JOB_H_
