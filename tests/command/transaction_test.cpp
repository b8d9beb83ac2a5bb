// One command and its reply: framing, the check of the head, recovery, the result map.

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "command/command_factory.h"
#include "command/commands.h"
#include "command/general_command_proc.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using Strings = std::vector<std::string>;

struct Delivered {
  int32_t code = 0;
  int32_t replyCode = 0;
  bool ok = false;
  Strings values;
};

class TransactionTest : public ::testing::Test {
 protected:
  TransactionStatus Run(int32_t code, Strings parameters = {}) {
    CommandArguments arguments{std::move(parameters), {}, &clock};
    arguments.resultCallback = [this](int32_t c, int32_t reply, bool ok, Strings values) {
      delivered = Delivered{c, reply, ok, std::move(values)};
    };
    command = CreateCommand(printer, code, std::move(arguments));
    return command->Execute();
  }

  ScriptedChannel printer;
  ManualClock clock;
  std::unique_ptr<CommandBase> command;
  std::optional<Delivered> delivered;
};

TEST_F(TransactionTest, DeliversTheRecordOfAnAcceptedReply) {
  printer.Replies({"F102 OK S:0\r"});
  EXPECT_EQ(Run(102), kReplied);
  EXPECT_EQ(printer.Wire(), Strings{"F102\r\n"});
  ASSERT_TRUE(delivered);
  EXPECT_TRUE(delivered->ok);
  EXPECT_EQ(command->result(), (ResultMap{{"S", "0"}}));
  EXPECT_EQ(clock.Sleeps(), 0);
}

TEST_F(TransactionTest, RefusalIsARepliedTransactionWithItsFields) {
  printer.Replies({"F102 NG S:3 E:12"});
  EXPECT_EQ(Run(102), kReplied);
  EXPECT_FALSE(delivered->ok);
  EXPECT_EQ(command->result(), (ResultMap{{"E", "12"}, {"S", "3"}}));
}

// What comes back, attempt by attempt; what the transaction makes of it, and how.
struct RecoveryRow {
  const char* name;
  Strings replies;
  TransactionStatus status;
  bool ok;
  Strings wire;
};

TEST_F(TransactionTest, RecoversWithinItsBounds) {
  const std::string request = "F101\r\n";
  const RecoveryRow rows[] = {
      {"silence: two resends", {}, kNoReply, false, {request, request, request}},
      {"resend answered", {"", "F101 OK"}, kReplied, true, {request, request}},
      {"one token is too little", {"F101OK", "", ""}, kNoReply, false, {request, request, request}},
      // The head of the first reply decides, so reading on does not help.
      {"foreign reply: two reads",
       {"F102 OK", "F101 OK"},
       kOtherReply,
       false,
       {request, "<read>", "<read>"}},
      {"silence, then a foreign reply",
       {"", "F102 OK", "F101 OK"},
       kOtherReply,
       false,
       {request, request, "<read>", "<read>"}},
      {"echoed letter is not checked", {"X101 OK"}, kReplied, true, {request}},
      {"digits lead, the rest is ignored", {"F101abc OK"}, kReplied, true, {request}},
      // The piece that came first stays the head: its verdict is the second token.
      {"partial line, then the whole", {"F101", "F101 OK"}, kReplied, false, {request, request}},
  };
  for (const RecoveryRow& row : rows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    delivered.reset();
    for (const std::string& reply : row.replies) printer.Replies({reply});
    const int64_t before = clock.SleptMs();
    EXPECT_EQ(Run(101), row.status);
    EXPECT_EQ(printer.Wire(), row.wire);
    EXPECT_EQ(clock.SleptMs() - before, 1000 * static_cast<int64_t>(row.wire.size() - 1));
    ASSERT_TRUE(delivered);
    EXPECT_EQ(delivered->ok, row.ok);
  }
}

TEST_F(TransactionTest, MalformedHeadReachesTheCaller) {
  printer.Replies({"Fabc OK"});
  try {
    Run(101);
    FAIL() << "no exception";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "invalid stoi argument");
  }
  printer.Replies({"F99999999999 OK"});
  try {
    Run(101);
    FAIL() << "no exception";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "stoi argument out of range");
  }
}

TEST_F(TransactionTest, ParameterWithALineEndIsNotSent) {
  for (const char* parameter : {"1\r\nF104 S2", "1\n", "\r"}) {
    EXPECT_EQ(Run(190, {parameter}), kNoReply);
  }
  EXPECT_TRUE(printer.Wire().empty());
  EXPECT_EQ(clock.Sleeps(), 0);
}

TEST_F(TransactionTest, WithoutCallbackNoResultIsBuilt) {
  printer.Replies({"F101 OK V:1"});
  const auto bare = MakeCommand<F101Cmd>(printer, {{}, {}, &clock});
  EXPECT_EQ(bare->Execute(), kReplied);
  EXPECT_TRUE(bare->result().empty());
}

TEST_F(TransactionTest, UnequalViewsGiveAnEmptyMapAndKeepTheStatus) {
  // Letter values, but colon keys: one value, no key.
  printer.Replies({"F104 OK S2"});
  EXPECT_EQ(Run(104, {"2"}), kReplied);
  EXPECT_TRUE(command->result().empty());
  EXPECT_EQ(delivered->values, Strings{"2"});
}

// The processor's verdict on a reply, and what the error callback is told.
TEST_F(TransactionTest, GeneralProcessorReportsFailureTwice) {
  struct Row {
    const char* reply;
    int32_t result;
    std::vector<std::pair<int32_t, int32_t>> errors;
    Strings output;
  };
  const Row rows[] = {
      {"F120 OK", 0, {}, {}},
      {"F120 OK S3 T25", 0, {}, {"3", "25"}},
      {"F120 NG S3", 29, {{29, 120}}, {"3"}},
      {"", 1, {{-1, 120}}, {}},
      {"F121 OK", 1, {{-2, 120}}, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reply);
    printer = ScriptedChannel();
    printer.Replies({row.reply});
    std::vector<std::pair<int32_t, int32_t>> errors;
    Connect::GeneralCommandProc proc(
        CreateCommand(printer, 120, {{}, {}, &clock}),
        [&](Connect::ConnectError error, int32_t code) { errors.emplace_back(error, code); });
    Strings output{"old"};
    EXPECT_EQ(proc.Process(output), row.result);
    EXPECT_EQ(errors, row.errors);
    EXPECT_EQ(output, row.output);
  }
}

TEST_F(TransactionTest, LookUpsConvertAsPromised) {
  printer.Replies({"F105 OK S:4% R:-7 C: V:x Q:99999999999"});
  Connect::GeneralCommandProc proc(CreateCommand(printer, 105, {{}, {}, &clock}));
  Strings output;
  ASSERT_EQ(proc.Process(output), 0);
  EXPECT_EQ(proc.GetIntValue("S"), 4);
  EXPECT_EQ(proc.GetIntValue("R"), -7);
  EXPECT_EQ(proc.GetIntValue("C"), 0) << "empty value";
  EXPECT_EQ(proc.GetIntValue("P"), 0) << "absent key";
  EXPECT_EQ(proc.GetStringValue("s"), "") << "keys are case-sensitive";
  EXPECT_THROW(proc.GetIntValue("V"), std::invalid_argument);
  EXPECT_THROW(proc.GetIntValue("Q"), std::out_of_range);
}

}  // namespace
}  // namespace Nuv::Command
