#include "command/command_runner.h"

#include <algorithm>
#include <iterator>

#include "command/commands.h"
#include "command/reply_views.h"
#include "platform/diagnostics.h"

namespace Nuv::Command {
namespace {

using MakeFunction = std::unique_ptr<CommandBase> (*)(Connect::IChannel&, CommandArguments);

template <class Class>
std::unique_ptr<CommandBase> Make(Connect::IChannel& channel, CommandArguments arguments) {
  return MakeCommand<Class>(channel, std::move(arguments));
}

struct FactoryRow {
  int code;
  MakeFunction make;
};

template <class Class>
constexpr FactoryRow Row() {
  return {Class::kCode, Make<Class>};
}

// In code order. The classes that the catalogue marks as made directly are not here.
constexpr FactoryRow kFactory[] = {
    Row<F101Cmd>(), Row<F102Cmd>(), Row<F103Cmd>(), Row<F104Cmd>(), Row<F105Cmd>(), Row<F106Cmd>(),
    Row<F107Cmd>(), Row<F108Cmd>(), Row<F109Cmd>(), Row<F110Cmd>(), Row<F111Cmd>(), Row<F112Cmd>(),
    Row<F117Cmd>(), Row<F120Cmd>(), Row<F121Cmd>(), Row<F122Cmd>(), Row<F155Cmd>(), Row<F156Cmd>(),
    Row<F157Cmd>(), Row<F159Cmd>(), Row<F160Cmd>(), Row<F166Cmd>(), Row<F169Cmd>(), Row<F170Cmd>(),
    Row<F171Cmd>(), Row<F174Cmd>(), Row<F175Cmd>(), Row<F176Cmd>(), Row<F177Cmd>(), Row<F186Cmd>(),
    Row<F188Cmd>(), Row<F189Cmd>(), Row<F190Cmd>(), Row<F191Cmd>(), Row<F192Cmd>(), Row<F194Cmd>(),
    Row<F196Cmd>(), Row<F197Cmd>(), Row<F198Cmd>(), Row<F219Cmd>(), Row<F301Cmd>(), Row<F303Cmd>(),
    Row<F310Cmd>(), Row<F319Cmd>(), Row<F327Cmd>(), Row<F332Cmd>(), Row<F335Cmd>(), Row<F366Cmd>(),
    Row<F503Cmd>(), Row<F504Cmd>(), Row<F506Cmd>(), Row<F507Cmd>(), Row<F515Cmd>(), Row<F550Cmd>(),
    Row<F708Cmd>(), Row<F807Cmd>(), Row<F839Cmd>(),
};

// The first code that only one of both has, or that is out of order; 0 when they are in step.
constexpr int OutOfStepWithCatalogue() {
  size_t index = 0;
  for (const CommandRow& row : kRows) {
    if (row.maker != Maker::kFactory) continue;
    if (index == std::size(kFactory) || kFactory[index].code != row.code) return row.code;
    ++index;
  }
  return index == std::size(kFactory) ? 0 : kFactory[index].code;
}
static_assert(OutOfStepWithCatalogue() == 0,
              "kFactory has a row for each code that catalogue.h says it makes, in code order");

}  // namespace

std::unique_ptr<CommandBase> CreateCommand(Connect::IChannel& channel, int code,
                                           CommandArguments arguments) {
  const FactoryRow* row =
      std::lower_bound(std::begin(kFactory), std::end(kFactory), code,
                       [](const FactoryRow& a, int wanted) { return a.code < wanted; });
  if (row == std::end(kFactory) || row->code != code) return nullptr;
  return row->make(channel, std::move(arguments));
}

}  // namespace Nuv::Command

namespace Nuv::Connect {

void Clear(Outputs outputs) {
  for (const Output& output : outputs) {
    if (int* const* number = std::get_if<int*>(&output.out)) {
      **number = 0;
    } else {
      std::get<std::string*>(output.out)->clear();
    }
  }
}

std::string Outcome::Text(const std::string& key) const {
  const auto field = fields.find(key);
  return field == fields.end() ? std::string() : field->second;
}

int Outcome::Number(const std::string& key) const {
  const std::string text = Text(key);
  return text.empty() ? 0 : Command::ParseDecimal(text, code);
}

int Outcome::Fill(Outputs outputs) const {
  if (result != NUV_OK) return result;
  std::vector<int> numbers;
  numbers.reserve(outputs.size());
  for (const Output& output : outputs) {
    numbers.push_back(std::holds_alternative<int*>(output.out) ? Number(output.key) : 0);
  }
  auto read = numbers.begin();
  for (const Output& output : outputs) {
    if (int* const* number = std::get_if<int*>(&output.out)) {
      **number = *read;
    } else {
      *std::get<std::string*>(output.out) = Text(output.key);
    }
    ++read;
  }
  return result;
}

Outcome RunCommand(Command::AbstractCommand& command, const ErrorCallback& tell, Refusal refusal) {
  Outcome outcome;
  outcome.code = command.GetCode();
  bool ok = false;
  command.SetResultCallback(
      [&](int /*code*/, int /*replyCode*/, bool replyOk, std::vector<std::string> values) {
        ok = replyOk;
        outcome.values = std::move(values);
      });
  const bool replied = command.Execute() == Command::kReplied;
  outcome.fields = command.TakeResult();
  outcome.reason = replied && !ok ? Reason::kRefused : command.GetReason();
  const bool fails = !replied || (!ok && refusal == Refusal::kFails);
  outcome.result = fails ? ResultOf(outcome.reason, Step::kCommand) : NUV_OK;
  if (fails && tell) tell(ErrorOf(outcome.reason), outcome.code);
  return outcome;
}

Outcome CommandRunner::Run(int code, std::vector<std::string> parameters, Refusal refusal) const {
  if (const auto command = Command::CreateCommand(channel_, code, {{}, {}, &clock_, interrupt_})) {
    return Run(*command, std::move(parameters), refusal);
  }
  Platform::Diagnostic("no command F%d", code);
  Outcome outcome;
  outcome.code = code;
  if (tell_) tell_(ErrorOf(outcome.reason), code);
  return outcome;
}

Outcome CommandRunner::Run(Command::CommandBase& command, std::vector<std::string> parameters,
                           Refusal refusal) const {
  command.Bind(channel_, clock_, interrupt_);
  command.SetParameters(std::move(parameters));
  Outcome outcome = RunCommand(command, tell_, refusal);
  outcome.sentAgain = command.SentAgain();
  return outcome;
}

}  // namespace Nuv::Connect
