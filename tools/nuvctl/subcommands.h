// The subcommands. A new one is a file cmd_NAME.cpp, its line below and its row in
// command_line.cpp.
#ifndef NUVCTL_SUBCOMMANDS_H_
#define NUVCTL_SUBCOMMANDS_H_

#include <functional>

#include "context.h"
#include "report.h"

namespace CLI {
class App;
}

namespace nuvctl {

// Does the work, with the library started. Throws CommandError.
using Action = std::function<Report(Context&)>;

// Each adds the subcommand's own arguments to `app` and returns what runs it after parsing.
Action DeclareList(CLI::App& app);
Action DeclareInfo(CLI::App& app);
Action DeclareStatus(CLI::App& app);
Action DeclareSend(CLI::App& app);
Action DeclareWatch(CLI::App& app);
Action DeclareFirmware(CLI::App& app);
Action DeclareGcode(CLI::App& app);
Action DeclareRaw(CLI::App& app);
Action DeclareResin(CLI::App& app);
Action DeclareSensors(CLI::App& app);
Action DeclareJobs(CLI::App& app);
Action DeclareVersions(CLI::App& app);
Action DeclareTank(CLI::App& app);
Action DeclareLeds(CLI::App& app);
Action DeclareNickname(CLI::App& app);
Action DeclareLaserPower(CLI::App& app);
Action DeclareZCompensation(CLI::App& app);
Action DeclareScaling(CLI::App& app);
Action DeclareSkipWarmup(CLI::App& app);
Action DeclareWifi(CLI::App& app);

}  // namespace nuvctl

#endif  // NUVCTL_SUBCOMMANDS_H_
