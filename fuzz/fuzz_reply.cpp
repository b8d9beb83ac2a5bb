// Reads the input as what a printer answers to a command, whose code is the first line: a reply a
// line, then silence. From the replies that are still owed to the numbers that a host gets.
#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "command/command_runner.h"
#include "command/reply_views.h"
#include "connect/reply_ledger.h"
#include "fuzz/targets.h"
#include "tests/support/channel_stub.h"

namespace {

using namespace Nuv;  // NOLINT(google-build-using-namespace): a program of its own

// A command that recovers reads up to so many replies as one.
constexpr size_t kMostReplies = 5;

class PrintersLines final : public ChannelStub {
 public:
  explicit PrintersLines(std::string_view lines) : lines_(lines) {}

  Connect::Reply Transact(const Connect::Request& request) override {
    ledger_.Asked(request.line);
    return ReadAgain(nullptr);
  }
  Connect::Reply ReadAgain(Platform::Interrupt*) override {
    Fuzz::Require(++read_ <= kMostReplies, "a command ends");
    Connect::Reply reply{std::string(lines_.substr(0, lines_.find('\n'))), Connect::Reason::kNone};
    if (reply.text.size() < lines_.size()) reply.text += '\n';
    lines_.remove_prefix(reply.text.size());
    if (reply.text.empty()) reply.reason = Connect::Reason::kSilence;
    ledger_.Answered(reply.text);
    return reply;
  }

 private:
  std::string_view lines_;
  size_t read_ = 0;
  Connect::ReplyLedger ledger_;
};

class NoPauses final : public Platform::Clock {
 public:
  void SleepFor(std::chrono::milliseconds) override {}
};

// Of any code, so that no input is lost on one that no command has.
const Command::CommandRow& RowOf(std::string_view digits) {
  unsigned code = 0;
  for (const char each : digits) code = code * 10 + static_cast<unsigned char>(each) - '0';
  const auto* const row = std::lower_bound(
      std::begin(Command::kRows), std::end(Command::kRows), code,
      [](const Command::CommandRow& a, unsigned b) { return static_cast<unsigned>(a.code) < b; });
  const bool isKnown = row != std::end(Command::kRows) && static_cast<unsigned>(row->code) == code;
  return isKnown ? *row : Command::kRows[code % std::size(Command::kRows)];
}

// One that the factory does not make, which reads its reply as its row says.
class CommandOfRow final : public Command::TableCommand {
 public:
  explicit CommandOfRow(const Command::CommandRow& row) : TableCommand(row) {}
};

Connect::Outcome Run(const Connect::CommandRunner& runner, const Command::CommandRow& row) {
  if (row.maker == Command::Maker::kFactory) return runner.Run(row.code);
  CommandOfRow command(row);
  return runner.Run(command);
}

bool HoldsDigit(const std::string& text) {
  return text.find_first_of("0123456789") != std::string::npos;
}

void ReadNumbers(const std::string& text, int code) {
  Command::ParseDecimal(text, code);
  Fuzz::Require(HoldsDigit(text), "a number has a digit");
  Command::ParseFraction(text, code);
}

}  // namespace

void Fuzz::Reply(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view code = input.substr(0, input.find('\n'));
  const Command::CommandRow& row = RowOf(code);
  PrintersLines channel(input.substr(std::min(code.size() + 1, size)));
  NoPauses clock;
  // Whoever reads a number is told of a malformed one by two exceptions and no other.
  try {
    const Connect::Outcome outcome = Run({channel, clock, {}}, row);
    Require((outcome.result == NUV_OK) == (outcome.reason == Connect::Reason::kNone),
            "who has no reason has not failed");
    Require(outcome.result == NUV_OK || outcome.result == NUV_FAILED ||
                outcome.result == NUV_PRINTER_REFUSED,
            "a command ends in one of three results");
    for (const std::string& value : outcome.values) {
      Require(value.size() < size, "a value is no longer than the replies");
    }
    for (const auto& [key, value] : outcome.fields) {
      Require(value.size() < size, "a field is no longer than the replies");
      Require(outcome.Text(key) == value, "a field is found by its key");
    }
    for (const std::string& value : outcome.values) ReadNumbers(value, row.code);
    for (const auto& [key, value] : outcome.fields) ReadNumbers(value, row.code);
  } catch (const std::invalid_argument& error) {
    Require(dynamic_cast<const Command::ReplyError*>(&error) != nullptr, "it tells its command");
  } catch (const std::out_of_range& error) {
    Require(dynamic_cast<const Command::ReplyError*>(&error) != nullptr, "it tells its command");
  }
}
