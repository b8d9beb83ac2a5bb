// The commands of the tool `nuvfile`.
#ifndef NUVFILE_TOOL_COMMANDS_H_
#define NUVFILE_TOOL_COMMANDS_H_

#include <string>
#include <vector>

namespace nuvfile::tool {

// What scripts can rely on.
enum ExitCode {
  kExitOk = 0,
  kExitRefused = 1,  // the file is damaged, or its content is not allowed
  kExitUsage = 2,    // the command line is wrong
  kExitIo = 3,       // a file could not be opened, read or written
};

struct CreateOptions {
  std::string lines_path;
  std::string out_path;
  std::string machine_id;
  std::string project_id;
  std::string material_id;
  std::vector<std::string> arguments;  // name=value
  std::string key_path;                // these may be empty
  std::string l101_path;
  std::string l102_path;
  std::string l103_path;
  std::string preview_path;
};

// Each prints its result to standard output, or to standard error a message that names
// the fault and what to do about it, and returns the exit code.
int RunCreate(const CreateOptions& options);
int RunInfo(const std::string& path, bool json);
int RunVerify(const std::string& path, bool json);

}  // namespace nuvfile::tool

#endif  // NUVFILE_TOOL_COMMANDS_H_
