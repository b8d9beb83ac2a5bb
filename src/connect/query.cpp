#include "connect/query.h"

#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

// The result for a printer that refuses a resin query and names its resin state instead.
int32_t ResinRefusal(int32_t resinState) {
  switch (resinState) {
    case 0:
      return NUV_RESIN_NO_CARTRIDGE;
    case 1:
      return NUV_RESIN_TAG_UNREADABLE;
    case 2:
      return NUV_RESIN_EXPIRED;
    case 3:
      return NUV_RESIN_WRONG_TYPE;
    case 4:
      return NUV_RESIN_EMPTY;
    default:
      return NUV_FAILED;
  }
}

}  // namespace

void Outputs::Clear() const {
  for (const Number& number : numbers) *number.out = 0;
  for (const Text& text : texts) text.out->clear();
}

Command::CommandArguments Query::Arguments(std::vector<std::string> parameters) const {
  Command::CommandArguments arguments;
  arguments.parameters = std::move(parameters);
  arguments.clock = &clock_;
  return arguments;
}

int32_t Query::ProcessByCode(int32_t code, std::vector<std::string> parameters) {
  code_ = code;
  std::unique_ptr<Command::CommandBase> command =
      Command::CreateCommand(channel_, code, Arguments(std::move(parameters)));
  if (command == nullptr) {
    Platform::Diagnostic("no command F%d", code);
    return NUV_FAILED;
  }
  return Process(std::move(command));
}

int32_t Query::Process(std::unique_ptr<Command::CommandBase> command) {
  // Without an error callback of its own: the host is told once, by the operation.
  proc_ = std::make_unique<GeneralCommandProc>(std::move(command));
  return proc_->Process(values_);
}

int32_t Query::Run(int32_t code, std::vector<std::string> parameters) {
  return Report(ProcessByCode(code, std::move(parameters)));
}

int32_t Query::Read(int32_t code, std::vector<std::string> parameters, const Outputs& outputs) {
  outputs.Clear();
  const int32_t result = Run(code, std::move(parameters));
  if (result == NUV_OK) Fill(outputs);
  return result;
}

int32_t Query::ReadResin(int32_t code, const Outputs& outputs) {
  outputs.Clear();
  const int32_t result = ProcessByCode(code, {});
  if (result == NUV_OK) {
    Fill(outputs);
    return result;
  }
  // A printer that has no such query refuses it without naming a state.
  const bool namesState = result == NUV_PRINTER_REFUSED && Fields().count("S") != 0;
  return Fail(namesState ? ResinRefusal(Number("S")) : result);
}

void Query::Fill(const Outputs& outputs) const {
  // All numbers are read before the first is written: one that is malformed throws.
  std::vector<int32_t> numbers;
  numbers.reserve(outputs.numbers.size());
  for (const Outputs::Number& number : outputs.numbers) numbers.push_back(Number(number.key));
  for (size_t i = 0; i < numbers.size(); ++i) *outputs.numbers[i].out = numbers[i];
  for (const Outputs::Text& text : outputs.texts) *text.out = Text(text.key);
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
