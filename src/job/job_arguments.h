#ifndef NUV_JOB_JOB_ARGUMENTS_H_
#define NUV_JOB_JOB_ARGUMENTS_H_

#include <string>

#include "command/code_procs.h"
#include "job/print_file_library.h"

namespace Nuv::Connect {

// What a print file's arguments (lines "name=value") say of the job. Unknown names are passed over;
// a missing or malformed number is 0, which the printer judges.
JobOpening ReadJobArguments(const std::string& arguments);

// The same of the open print file, with its model data size.
JobOpening OpeningOf(IPrintFileLibrary& printFiles);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_ARGUMENTS_H_
