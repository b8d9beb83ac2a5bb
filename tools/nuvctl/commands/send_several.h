// A print job for several printers at once.
#ifndef NUVCTL_COMMANDS_SEND_SEVERAL_H_
#define NUVCTL_COMMANDS_SEND_SEVERAL_H_

#include <string>
#include <vector>

#include "context.h"

namespace NuvCtl {

// Runs 'nuvctl send' for each of the chosen printers, with `options`, at the same time: a bar each,
// then how each ended. Throws CommandError, with the outcomes, when one failed.
Report SendToSeveral(const Context& context, const std::string& file,
                     const std::vector<std::string>& options);

}  // namespace NuvCtl

#endif  // NUVCTL_COMMANDS_SEND_SEVERAL_H_
