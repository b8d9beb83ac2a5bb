// The command set: which codes a printer knows, and what each one does and answers. A table for
// each topic; a new command is a new row.
#ifndef NUVSIM_COMMANDS_TABLE_H_
#define NUVSIM_COMMANDS_TABLE_H_

#include <string>
#include <vector>

#include "nuvsim/commands/request.h"
#include "nuvsim/printer/machine.h"
#include "nuvsim/printer/models.h"

namespace NuvSim {

struct CommandRow {
  int code;
  Feature needs;  // what a model must have to know the command
  // Carries the command out and returns what follows the head of the answer.
  std::string (*answer)(Machine&, const Request&);
};

using CommandTable = std::vector<CommandRow>;

const CommandTable& IdentityCommands();
const CommandTable& ResinCommands();
const CommandTable& SettingsCommands();
const CommandTable& NetworkCommands();
const CommandTable& HistoryCommands();
const CommandTable& LightEngineCommands();
const CommandTable& JobCommands();
const CommandTable& FirmwareCommands();

// A field that several topics answer with.
std::string StateField(Machine& machine);

// Carries the command out and returns the answer: one line, or several with CR LF between, without
// the last line end. Codes that the printer's model does not know are answered with "NG" alone.
std::string Answer(Machine& machine, const Request& request);

}  // namespace NuvSim

#endif  // NUVSIM_COMMANDS_TABLE_H_
