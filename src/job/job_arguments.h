#ifndef NUV_JOB_JOB_ARGUMENTS_H_
#define NUV_JOB_JOB_ARGUMENTS_H_

#include <optional>

#include "command/code_procs.h"
#include "job/print_file_library.h"

namespace Nuv::Connect {

// What the arguments (lines "name=value") and the model data of the open print file say of the job.
// Unknown names are passed over; a missing number, or a malformed fraction, is 0, which the printer
// judges. Nothing, with a diagnostic, when the layers or the minutes are not digits alone or beyond
// 31 bits: NuvFile refuses such a file, another build of it may not.
std::optional<JobOpening> OpeningOf(IPrintFileLibrary& printFiles);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_ARGUMENTS_H_
