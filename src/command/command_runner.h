// The one way to run a command: made for its code, bound to a channel, run, and its outcome told.
#ifndef NUV_COMMAND_COMMAND_RUNNER_H_
#define NUV_COMMAND_COMMAND_RUNNER_H_

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "command/command_base.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Command {

// What a command is created with. `clock` and `interrupt` must outlive it.
struct CommandArguments {
  std::vector<std::string> parameters;  // in wire order
  ResultCallback resultCallback;        // may be empty
  Platform::Clock* clock = &Platform::SystemClock();
  Platform::Interrupt* interrupt = nullptr;  // raised: the command waits no longer
};

// The factory: makes the command of `code`, bound to `channel`, which must outlive it. Null for a
// code that no class has, and for those that only their processors and the framework run.
std::unique_ptr<CommandBase> CreateCommand(Connect::IChannel& channel, int code,
                                           CommandArguments arguments);

// Makes a command of one class and binds it in the same way.
template <class Class>
std::unique_ptr<Class> MakeCommand(Connect::IChannel& channel, CommandArguments arguments) {
  auto command = std::make_unique<Class>();
  command->Bind(channel, *arguments.clock, arguments.interrupt);
  command->SetParameters(std::move(arguments.parameters));
  command->SetResultCallback(std::move(arguments.resultCallback));
  return command;
}

}  // namespace Nuv::Command

namespace Nuv::Connect {

// Called with the error and the code of the command that failed.
using ErrorCallback = std::function<void(ConnectError error, int code)>;

// What a refusal by the printer is to whoever runs the command: a failure, told and returned as
// 29, or an answer like another, which shows in Outcome::reason.
enum class Refusal { kFails, kAnswers };

// Where a field of a reply goes.
struct Output {
  const char* key;
  std::variant<int*, std::string*> out;
};
// Those of an operation, in the order of its arguments.
using Outputs = std::initializer_list<Output>;

// Sets the numbers to 0 and empties the texts.
void Clear(Outputs outputs);

// What became of a command.
struct Outcome {
  int code = 0;
  Reason reason = Reason::kMalformed;  // kRefused also where that does not fail
  int result = NUV_FAILED;             // 0, 1 the transaction failed, 29 refused (where that fails)
  bool sentAgain = false;              // the printer may have taken the request each time
  std::vector<std::string> values;     // of the reply, in its order; also of a refusal
  Command::ResultMap fields;           // the same by key

  // A field of the reply, empty or 0 when it lacked it. Number throws what ParseDecimal throws.
  std::string Text(const std::string& key) const;
  int Number(const std::string& key) const;

  // Fills the outputs from the fields of a command that succeeded, all of them or, when a number
  // is malformed and throws, none. Returns the result.
  int Fill(Outputs outputs) const;
};

// Runs `command`, which is bound, and tells `tell` (may be empty) of a failure. Errors raised
// inside the command (a reply whose head bears no number) pass through.
Outcome RunCommand(Command::AbstractCommand& command, const ErrorCallback& tell, Refusal refusal);

// Runs commands on one channel for one who is told of their failures.
//
// Thread-safety: none; runs on the caller's thread and holds no lock. The channel serialises the
// transactions.
class CommandRunner {
 public:
  // `tell` may be empty, `interrupt` null; the others outlive the runner.
  CommandRunner(IChannel& channel, Platform::Clock& clock, ErrorCallback tell,
                Platform::Interrupt* interrupt = nullptr)
      : channel_(channel), clock_(clock), tell_(std::move(tell)), interrupt_(interrupt) {}

  // Runs the command of `code` with `parameters`, in wire order. A code that the factory does not
  // know fails as one without a reply.
  Outcome Run(int code, std::vector<std::string> parameters = {},
              Refusal refusal = Refusal::kFails) const;

  // As Run, for a command that the caller made.
  Outcome Run(Command::CommandBase& command, std::vector<std::string> parameters = {},
              Refusal refusal = Refusal::kFails) const;

  // As Run, for a command class, also one that the factory does not make.
  template <class Class>
  Outcome Run(std::vector<std::string> parameters = {}, Refusal refusal = Refusal::kFails) const {
    Class command;
    return Run(command, std::move(parameters), refusal);
  }

  // Runs a command and fills the outputs, which are cleared first.
  int Read(int code, std::vector<std::string> parameters, Outputs outputs) const {
    Clear(outputs);
    return Run(code, std::move(parameters)).Fill(outputs);
  }
  template <class Class>
  int Read(Outputs outputs) const {
    Clear(outputs);
    return Run<Class>().Fill(outputs);
  }

 private:
  IChannel& channel_;
  Platform::Clock& clock_;
  ErrorCallback tell_;
  Platform::Interrupt* interrupt_;
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_COMMAND_RUNNER_H_
