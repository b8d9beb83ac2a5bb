#ifndef NUV_COMMAND_COMMAND_FACTORY_H_
#define NUV_COMMAND_COMMAND_FACTORY_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "command/command_base.h"

namespace Nuv::Command {

// What a command is created with. `clock` and `interrupt` must outlive it.
struct CommandArguments {
  std::vector<std::string> parameters;  // in wire order
  ResultCallback resultCallback;        // may be empty
  Platform::Clock* clock = &Platform::SystemClock();
  Platform::Interrupt* interrupt = nullptr;  // raised: the command waits no longer
};

// Makes the command of `code`, bound to `channel`, which must outlive it. Null for a code that no
// class has, and for those that their processors and the framework make for themselves.
std::unique_ptr<CommandBase> CreateCommand(Connect::IChannel& channel, int32_t code,
                                           CommandArguments arguments);

// Makes a command of one class and binds it in the same way: for the commands that the factory
// leaves to their processors and the framework.
template <class Class>
std::unique_ptr<Class> MakeCommand(Connect::IChannel& channel, CommandArguments arguments) {
  auto command = std::make_unique<Class>();
  command->Bind(channel, *arguments.clock, arguments.interrupt);
  command->set_parameters(std::move(arguments.parameters));
  command->set_result_callback(std::move(arguments.resultCallback));
  return command;
}

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_COMMAND_FACTORY_H_
