// Subcommands that ask one printer, or with --all every one at once.
#ifndef NUVCTL_COMMANDS_SEVERAL_H_
#define NUVCTL_COMMANDS_SEVERAL_H_

#include <memory>

#include "commands/commands.h"
#include "listing.h"

namespace NuvCtl {

// One row for each printer that is known or found, all asked at once. `head`: of the cells that
// `errand` returns. Throws CommandError, with the rows, when a printer failed.
Report AskAll(const Context& context, const TableRow& head, const Errand& errand);

// Adds --all to `app`; `one` runs without it.
Action DeclareAll(CLI::App& app, Report (*one)(const Context&), const TableRow& head,
                  const Errand& errand);

}  // namespace NuvCtl

#endif  // NUVCTL_COMMANDS_SEVERAL_H_
