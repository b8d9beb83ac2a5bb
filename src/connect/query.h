#ifndef NUV_CONNECT_QUERY_H_
#define NUV_CONNECT_QUERY_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "command/command_factory.h"
#include "command/general_command_proc.h"
#include "job/job_context.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

// Where the fields of a reply go, by key. An operation's outputs stand in the order of the keys on
// the wire.
struct Outputs {
  struct Number {
    const char* key;
    int* out;
  };
  struct Text {
    const char* key;
    std::string* out;
  };
  std::vector<Number> numbers;
  std::vector<Text> texts;

  // Sets the numbers to 0 and empties the texts.
  void Clear() const;
};

// One command transaction on behalf of an operation of the framework. A failure is reported to the
// host's error-code callback once, with the operation's result.
//
// Thread-safety: none; lives on the stack of one call. The channel serialises the transactions.
class Query {
 public:
  // All three outlive the query.
  Query(IChannel& channel, Platform::Clock& clock, const HostCallbacks& callbacks)
      : channel_(channel), clock_(clock), callbacks_(callbacks) {}

  // Runs command `code` with `parameters`, in wire order. 0, 1 the transaction failed or no such
  // command, 29 the printer refused.
  int32_t Run(int32_t code, std::vector<std::string> parameters = {});

  // As Run, for a command class that the factory does not make.
  template <class Class>
  int32_t RunDirect(std::vector<std::string> parameters = {}) {
    code_ = Class::kCode;
    return Report(Process(Command::MakeCommand<Class>(channel_, Arguments(std::move(parameters)))));
  }

  // Runs command `code` and fills the outputs from the fields of the reply: all of them or, when it
  // fails or throws, none. They are set to 0 and emptied first. Results as Run.
  int32_t Read(int32_t code, std::vector<std::string> parameters, const Outputs& outputs);

  // As Read, for a command class that the factory does not make.
  template <class Class>
  int32_t ReadDirect(const Outputs& outputs) {
    outputs.Clear();
    const int32_t result = RunDirect<Class>();
    if (result == NUV_OK) Fill(outputs);
    return result;
  }

  // As Read, for a resin query: a refusal that names the resin's state returns that (10 to 14, 1).
  int32_t ReadResin(int32_t code, const Outputs& outputs);

  // Reports `result` to the host and returns it.
  int32_t Fail(int32_t result) const;

  // Fields of the reply by key: 0 or empty when it lacked them. Number throws what ParseDecimal
  // throws.
  int32_t Number(const char* key) const { return proc_->GetIntValue(key); }
  std::string Text(const char* key) const { return proc_->GetStringValue(key); }
  const Command::ResultMap& Fields() const;

  // Of the command that was run last.
  int32_t code() const { return code_; }

  // The values of the reply in its order.
  const std::vector<std::string>& values() const { return values_; }

 private:
  // Fills the outputs from the reply of a command that was accepted.
  void Fill(const Outputs& outputs) const;

  Command::CommandArguments Arguments(std::vector<std::string> parameters) const;
  int32_t ProcessByCode(int32_t code, std::vector<std::string> parameters);
  int32_t Process(std::unique_ptr<Command::CommandBase> command);
  int32_t Report(int32_t result) const { return result == NUV_OK ? result : Fail(result); }

  IChannel& channel_;
  Platform::Clock& clock_;
  const HostCallbacks& callbacks_;
  int32_t code_ = 0;
  std::unique_ptr<GeneralCommandProc> proc_;
  std::vector<std::string> values_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_QUERY_H_
