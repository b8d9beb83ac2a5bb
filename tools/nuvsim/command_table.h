// The commands as tables, one for each topic. A new command is a new row.
#ifndef NUVSIM_COMMAND_TABLE_H_
#define NUVSIM_COMMAND_TABLE_H_

#include <string>
#include <vector>

#include "nuvsim/machine.h"
#include "nuvsim/models.h"
#include "nuvsim/request.h"

namespace nuvsim {

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

// Fields that several topics answer with.
std::string StateField(Machine& machine);
std::string ProgressFields(Machine& machine);  // with a blank ahead; empty unless printing

}  // namespace nuvsim

#endif  // NUVSIM_COMMAND_TABLE_H_
