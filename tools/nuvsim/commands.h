// The command set: which codes a printer knows, and what each one does and answers.
#ifndef NUVSIM_COMMANDS_H_
#define NUVSIM_COMMANDS_H_

#include <string>

#include "nuvsim/machine.h"
#include "nuvsim/request.h"

namespace nuvsim {

// Carries the command out and returns the answer: one line, or several with CR LF between, without
// the last line end. Codes that the printer's model does not know are answered with "NG" alone.
std::string Answer(Machine& machine, const Request& request);

}  // namespace nuvsim

#endif  // NUVSIM_COMMANDS_H_
