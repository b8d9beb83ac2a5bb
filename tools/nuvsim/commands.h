// The command set: which codes a printer knows, and what each one does and answers.
#ifndef NUVSIM_COMMANDS_H_
#define NUVSIM_COMMANDS_H_

#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/machine.h"

namespace nuvsim {

// A command line taken apart. The views are into the line.
struct Request {
  std::string_view head;                     // "F" and the code as it was sent
  int code = 0;                              // -1 when the code is no number that fits
  std::vector<std::string_view> parameters;  // split at blanks
};

Request ParseRequest(std::string_view line);

// Carries the command out and returns the answer without its line end. Codes that the printer
// does not know are answered with "NG".
std::string Answer(Machine& machine, const Request& request);

}  // namespace nuvsim

#endif  // NUVSIM_COMMANDS_H_
