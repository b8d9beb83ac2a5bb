#ifndef NUV_JOB_JOB_ARGUMENTS_H_
#define NUV_JOB_JOB_ARGUMENTS_H_

#include <string>

#include "command/code_procs.h"

namespace Nuv::Connect {

// What a print file's arguments (lines "name=value") say of the job. Unknown names are passed over;
// a missing or malformed number is 0, which the printer judges.
JobOpening ReadJobArguments(const std::string& arguments);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_ARGUMENTS_H_
