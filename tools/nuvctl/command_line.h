#ifndef NUVCTL_COMMAND_LINE_H_
#define NUVCTL_COMMAND_LINE_H_

#include <ostream>
#include <string>
#include <vector>

#include "system.h"

namespace NuvCtl {

// Runs nuvctl with `arguments` (UTF-8, without the program's name) and returns its exit code.
// Results go to `out`, with --json as exactly one document, errors included; messages for people
// and progress go to `err`. Throws nothing.
int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   System& system);

}  // namespace NuvCtl

#endif  // NUVCTL_COMMAND_LINE_H_
