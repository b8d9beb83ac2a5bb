// One command and its reply: framing, the check of the head, recovery, the result map.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "command/processors.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using ::testing::ThrowsMessage;
using Strings = std::vector<std::string>;

class TransactionTest : public ::testing::Test {
 protected:
  TransactionStatus Run(int code) {
    CommandArguments arguments{{}, {}, &clock};
    arguments.resultCallback = [this](int, int, bool ok, Strings) { accepted = ok; };
    command = CreateCommand(printer, code, std::move(arguments));
    return command->Execute();
  }

  ScriptedChannel printer;
  ManualClock clock;
  std::unique_ptr<CommandBase> command;
  std::optional<bool> accepted;  // what was delivered
};

TEST_F(TransactionTest, RefusalIsARepliedTransactionWithItsFields) {
  printer.Replies({"F102 NG S:3 E:12"});
  EXPECT_EQ(Run(102), kReplied);
  EXPECT_EQ(accepted, false);
  EXPECT_EQ(command->Result(), (ResultMap{{"E", "12"}, {"S", "3"}}));
}

// What comes back, attempt by attempt; what the transaction makes of it, and how: by requests (?)
// and mere reads (r).
TEST_F(TransactionTest, RecoversWithinItsBounds) {
  const struct {
    const char* name;
    Strings replies;
    TransactionStatus status;
    bool ok;
    const char* wire;
  } kRows[] = {
      {"silence: two resends", {}, kNoReply, false, "???"},
      {"resend answered", {"", "F101 OK"}, kReplied, true, "??"},
      {"one token is too little", {"F101OK", "", ""}, kNoReply, false, "???"},
      // The head of the first reply decides, so reading on does not help.
      {"foreign reply: two reads", {"F102 OK", "F101 OK"}, kOtherReply, false, "?rr"},
      {"silence, then a foreign reply", {"", "F102 OK", "F101 OK"}, kOtherReply, false, "??rr"},
      {"echoed letter is not checked", {"X101 OK"}, kReplied, true, "?"},
      {"digits lead, the rest is ignored", {"F101abc OK"}, kReplied, true, "?"},
      // The piece that came first stays the head: its verdict is the second token.
      {"partial line, then the whole", {"F101", "F101 OK"}, kReplied, false, "??"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    accepted.reset();
    for (const std::string& reply : row.replies) printer.Replies({reply});
    const int64_t before = clock.SleptMs();
    EXPECT_EQ(Run(101), row.status);
    std::string wire;
    for (const std::string& each : printer.Wire()) {
      wire += each == "F101\r\n" ? '?' : each == "<read>" ? 'r' : '!';
    }
    EXPECT_EQ(wire, row.wire);
    EXPECT_EQ(clock.SleptMs() - before, 1000 * static_cast<int64_t>(wire.size() - 1));
    EXPECT_EQ(accepted, row.ok);
  }
}

TEST_F(TransactionTest, MalformedHeadReachesTheCaller) {
  const auto run = [this] { Run(101); };
  printer.Replies({"Fabc OK"});
  EXPECT_THAT(run, ThrowsMessage<std::invalid_argument>("invalid stoi argument"));
  printer.Replies({"F99999999999 OK"});
  EXPECT_THAT(run, ThrowsMessage<std::out_of_range>("stoi argument out of range"));
}

// Letter values, but colon keys: one value, no key.
TEST_F(TransactionTest, UnequalViewsGiveAnEmptyMapAndKeepTheStatus) {
  printer.Replies({"F104 OK S2"});
  EXPECT_EQ(Run(104), kReplied);
  EXPECT_TRUE(command->Result().empty());
  EXPECT_EQ(accepted, true);
}

// What is told and returned, by the runner and by the processor of any command.
TEST_F(TransactionTest, ARefusalIsAFailureOrAnAnswer) {
  using Connect::Refusal;
  const struct {
    const char* reply;
    Refusal refusal;
    int result;
    const char* told;
    Strings values;
  } kRows[] = {
      {"F198 OK SSID=<a>", Refusal::kFails, NUV_OK, "", {"a"}},
      {"F198 NG SSID=<a>", Refusal::kFails, NUV_PRINTER_REFUSED, "29 F198", {"a"}},
      {"F198 NG SSID=<a>", Refusal::kAnswers, NUV_OK, "", {"a"}},
      {"", Refusal::kFails, NUV_FAILED, "-1 F198", {}},
      {"F101 OK", Refusal::kAnswers, NUV_FAILED, "-2 F198", {}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.reply);
    std::string told;
    const auto tell = [&](Connect::ConnectError error, int code) {
      told += std::to_string(error) + " F" + std::to_string(code);
    };
    printer = ScriptedChannel();
    printer.Always("", row.reply);
    const Connect::Outcome outcome =
        Connect::CommandRunner(printer, clock, tell).Run(198, {}, row.refusal);
    EXPECT_EQ(outcome.result, row.result);
    EXPECT_EQ(outcome.accepted, row.result == NUV_OK && row.refusal == Refusal::kFails);
    EXPECT_EQ(outcome.values, row.values);
    EXPECT_EQ(told, row.told);
    if (row.refusal == Refusal::kAnswers) continue;
    told.clear();
    Connect::GeneralCommandProc processor(CreateCommand(printer, 198, {{}, {}, &clock}), tell);
    Strings values = {"old"};
    EXPECT_EQ(processor.Process(values), row.result);
    EXPECT_EQ(values, row.values);
    EXPECT_EQ(told, row.told);
  }
}

TEST_F(TransactionTest, OutputsAreFilledAllOrNone) {
  const Connect::CommandRunner runner(printer, clock, {});
  int layers = 7;
  int minutes = 7;
  std::string name = "old";
  const auto read = [&] {
    return runner.Read(107, {}, {{"L", &layers}, {"R", &name}, {"T", &minutes}});
  };
  printer.Replies({"F107 OK L:300 T:x R:Job1"});
  EXPECT_THROW(read(), std::invalid_argument);
  EXPECT_EQ(std::to_string(layers) + name + std::to_string(minutes), "00");
  printer.Replies({"F107 OK L:300 R:Job1"});
  EXPECT_EQ(read(), NUV_OK);
  EXPECT_EQ(std::to_string(layers) + name + std::to_string(minutes), "300Job10");
}

}  // namespace
}  // namespace Nuv::Command
