#include "connect/query.h"

#include "command/command_factory.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {

int32_t Query::Process(int32_t code, std::vector<std::string> parameters) {
  code_ = code;
  Command::CommandArguments arguments;
  arguments.parameters = std::move(parameters);
  arguments.clock = &clock_;
  std::unique_ptr<Command::CommandBase> command =
      Command::CreateCommand(channel_, code, std::move(arguments));
  if (command == nullptr) {
    Platform::Diagnostic("no command F%d", code);
    return NUV_FAILED;
  }
  // Without an error callback of its own: the host is told once, by the operation.
  proc_ = std::make_unique<GeneralCommandProc>(std::move(command));
  return proc_->Process(values_);
}

int32_t Query::Run(int32_t code, std::vector<std::string> parameters) {
  const int32_t result = Process(code, std::move(parameters));
  return result == NUV_OK ? result : Fail(result);
}

int32_t Query::RunQuietOnRefusal(int32_t code) {
  const int32_t result = Process(code, {});
  return result == NUV_OK || result == NUV_PRINTER_REFUSED ? result : Fail(result);
}

const Command::ResultMap& Query::Fields() const {
  static const Command::ResultMap kNone;
  return proc_ == nullptr ? kNone : proc_->result();
}

int32_t Query::Fail(int32_t result) const {
  callbacks_.ReportError(result, code_);
  return result;
}

}  // namespace Nuv::Connect
