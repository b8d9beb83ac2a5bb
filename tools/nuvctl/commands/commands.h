// The subcommands, by topic. A new one is a row of its topic's file; a new topic is a file here,
// its line below and its place in command_line.cpp.
#ifndef NUVCTL_COMMANDS_COMMANDS_H_
#define NUVCTL_COMMANDS_COMMANDS_H_

#include <functional>
#include <vector>

#include "context.h"
#include "output.h"

namespace CLI {
class App;
}

namespace NuvCtl {

// Does the work. Throws CommandError.
using Action = std::function<Report(const Context&)>;

struct Subcommand {
  const char* name;
  const char* summary;
  const char* example;
  // Adds the subcommand's own arguments to `app` and returns what runs it after parsing.
  Action (*declare)(CLI::App& app);
};

// For `declare` of a subcommand that has no arguments of its own.
template <Report (*Run)(const Context&)>
Action Plain(CLI::App&) {
  return Run;
}

using Subcommands = std::vector<Subcommand>;
Subcommands DeviceCommands();
Subcommands DoctorCommands();
Subcommands IdentityCommands();
Subcommands ResinCommands();
Subcommands SettingsCommands();
Subcommands NetworkCommands();
Subcommands HistoryCommands();
Subcommands LightEngineCommands();
Subcommands JobCommands();
Subcommands FirmwareCommands();
Subcommands RawCommands();

}  // namespace NuvCtl

#endif  // NUVCTL_COMMANDS_COMMANDS_H_
