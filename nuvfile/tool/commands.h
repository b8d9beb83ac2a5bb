// The commands of the tool `nuvfile`.
#ifndef NUVFILE_TOOL_COMMANDS_H_
#define NUVFILE_TOOL_COMMANDS_H_

#include <string>
#include <vector>

namespace NuvFile::Tool {

// What scripts can rely on.
enum ExitCode {
  kExitOk = 0,
  kExitRefused = 1,  // the file is damaged, or its content is not allowed
  kExitUsage = 2,    // the command line is wrong
  kExitIo = 3,       // a file could not be opened, read or written
};

struct CreateOptions {
  std::string linesPath;
  std::string outPath;
  std::string machineId;
  std::string projectId;
  std::string materialId;
  std::vector<std::string> arguments;  // name=value
  std::string keyPath;                 // these may be empty
  std::string l101Path;
  std::string l102Path;
  std::string l103Path;
  std::string previewPath;
};

// Each prints its result to standard output, or to standard error a message that names
// the fault and what to do about it, and returns the exit code.
int RunCreate(const CreateOptions& options);
int RunInfo(const std::string& path, bool json);
int RunVerify(const std::string& path, bool json);

}  // namespace NuvFile::Tool

#endif  // NUVFILE_TOOL_COMMANDS_H_
