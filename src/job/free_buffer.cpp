#include "job/free_buffer.h"

#include <vector>

#include "command/command_factory.h"
#include "command/general_command_proc.h"
#include "job/machine_ids.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

constexpr int32_t kFreeBuffer = 117;
constexpr int32_t kFreeBufferAndroid = 503;

}  // namespace

uint64_t QueryFreeBufferSize(const JobContext& context, const std::string& machineId) {
  const int32_t code =
      FamilyOf(machineId) == PrinterFamily::kAndroid ? kFreeBufferAndroid : kFreeBuffer;
  Command::CommandArguments arguments;
  arguments.clock = &context.clock;
  GeneralCommandProc proc(Command::CreateCommand(context.channel, code, std::move(arguments)),
                          context.MakeErrorCallback());
  std::vector<std::string> values;
  if (proc.Process(values) != NUV_OK) return 0;
  const int32_t free = proc.GetIntValue("S");
  return free > 0 ? static_cast<uint64_t>(free) : 0;
}

}  // namespace Nuv::Connect
