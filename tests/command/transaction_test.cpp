// One command and its reply: framing, the check of the head, recovery, the result map.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "command/command_factory.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using ::testing::ThrowsMessage;
using Strings = std::vector<std::string>;

class TransactionTest : public ::testing::Test {
 protected:
  TransactionStatus Run(int32_t code) {
    CommandArguments arguments{{}, {}, &clock};
    arguments.resultCallback = [this](int32_t, int32_t, bool ok, Strings) { accepted = ok; };
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
  EXPECT_EQ(command->result(), (ResultMap{{"E", "12"}, {"S", "3"}}));
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
  EXPECT_TRUE(command->result().empty());
  EXPECT_EQ(accepted, true);
}

}  // namespace
}  // namespace Nuv::Command
