// One command and its reply, beyond the examples of docs/protocol.md: its request, the check of the
// head, recovery, how fields are read, and what is told and returned.

#include "command/command_base.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "command/commands.h"
#include "command/processors.h"
#include "command/reply_views.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"
#include "tests/support/told.h"

namespace Nuv::Command {
namespace {

using Connect::Reason;
using ::testing::ThrowsMessage;
using Strings = std::vector<std::string>;

class CommandTest : public ::testing::Test {
 protected:
  void Make(int code, const Strings& parameters = {}) {
    CommandArguments arguments;
    arguments.parameters = parameters;
    arguments.clock = &clock;
    accepted.reset();
    arguments.resultCallback = [this, code](int told, int /*replyCode*/, bool ok, Strings) {
      EXPECT_EQ(told, code);
      EXPECT_EQ(accepted, std::nullopt) << "delivered once";
      accepted = ok;
    };
    command = CreateCommand(printer, code, std::move(arguments));
  }
  TransactionStatus Run(int code, const Strings& parameters = {}) {
    Make(code, parameters);
    return command->Execute();
  }
  // "key=value" in the order of the keys.
  std::string Record() const {
    std::string record;
    for (const auto& [key, value] : command->Result()) {
      record += (record.empty() ? "" : "|") + key + "=" + value;
    }
    return record;
  }
  // Requests (?) and mere reads (r).
  std::string Wire() const {
    std::string wire;
    for (const std::string& each : printer.Wire()) wire += each == "<read>" ? 'r' : '?';
    return wire;
  }

  ScriptedChannel printer;
  ManualClock clock;
  std::unique_ptr<CommandBase> command;
  std::optional<bool> accepted;  // what was delivered
};

// Other counts of parameters than docs/protocol.md shows, and tags that no operation uses.
TEST_F(CommandTest, RequestsGoOutAsTheirFormSays) {
  const struct {
    int code;
    Strings parameters;
    const char* request;
  } kRows[] = {
      {102, {"1", "2"}, "F102"},
      {104, {"7", "8"}, "F104"},
      {106, {"1"}, "F106"},
      {159, {"1", "2", "3"}, "F159 S1 V2 C3"},
      {171, {"1", "2"}, "F171 S1"},
      {191, {"2", "a", "b", "c", "d"}, "F191"},
      {196, {}, "F196"},
  };
  for (const auto& row : kRows) {
    Make(row.code, row.parameters);
    EXPECT_EQ(command->BuildRequest(), std::string(row.request) + "\r\n");
  }
}

TEST_F(CommandTest, RepliesAreReadAsTheirFormSays) {
  const struct {
    int code;
    const char *reply, *record;
  } kRows[] = {
      {101, "F101 OK M:a\tb\r S:1\r", "M=a b|S=1"},
      {101, "F101 OK S:first S:second", "S=first"},
      {102, "F102 OK S1 C=4", "C=4|S=1"},
      {102, "F102 NG S:3 E:12", "E=12|S=3"},
      {104, "F104 OK S2", ""},  // letter values, but colon keys: one value, no key
      {157, "F157 OK I3 S9 S10", "I=3|S=10"},
      // A blank makes "Room" look like the key R.
      {190, "F190 OK SSID=<My Room = 2> R:80 S:1", "R=80|S=1|SSID=My Room = 2"},
      {190, "F190 OK S:1 SSID=<never closed R:80", "R=80|S=1|SSID=<never"},
      {190, "F190 OK SSID=<a > b> R:1> S1 C6 <", "C=6|S=1|SSID=a > b> R:1"},
      {192, "F192 OK SSID=Lab net IP=10.0.0.2 C6 M1", "C=6|IP=10.0.0.2|M=1|SSID=Lab"},
      {197, "F197 OK N:Lab printer: two", "N=Lab printer: two|printer="},
      {303, "F303 OK LSU:1 a P1:2", "LSU=1 a|P1=2"},
      {327, "F327 OK C:1 C1:2 L:3 L34 T:", "C=1|C1=2|L=3|L3=4|T="},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.reply);
    printer.Replies({row.reply});
    EXPECT_EQ(Run(row.code), kReplied);
    EXPECT_EQ(Record(), row.record);
    EXPECT_EQ(accepted, row.reply[5] == 'O');
  }
  printer.Replies({"F104 OK S2"});
  EXPECT_EQ(ToldBy([&] { Run(104); }), "[NKG]Failed to get command: F104\n");
}

TEST(ReplyViewsTest, NamesInBracketsMayHoldAnything) {
  const std::pair<const char*, Tokens> kRows[] = {
      {"SSID=<x: y=1 > z> SSID=<>", {"x: y=1 > z", ""}},
      {"SSID=<x=y> stray", {"<x=y> stray"}},
      {"SSID=<open SSID=<open too", {"<open", "<open too"}},
      {"SSID=<<b>> X:1", {"<b>", "1"}},
      {"", {}},
  };
  for (const auto& [fields, values] : kRows) {
    SCOPED_TRACE(fields);
    Tokens tokens;
    AppendTokens(std::string("F198 OK ") + fields, tokens);
    EXPECT_EQ(FieldValues(tokens), values);
  }
}

// The self-test's second line comes when the test is over.
TEST_F(CommandTest, SelfTestWaitsForItsSecondLineOnce) {
  const struct {
    Strings replies;
    const char *wire, *record;
  } kRows[] = {
      {{"F160 OK START", "F160 OK FINISH"}, "?r", "FINISH=FINISH|START=START"},
      {{"F160 OK START", ""}, "?r", "START=START"},
      {{"F160 OK START\r\nF160 OK FINISH"}, "?", "FINISH=FINISH|START=START"},
      {{"F160 OK"}, "?", ""},
      {{"F160 NG START"}, "?", ""},
  };
  for (const auto& row : kRows) {
    printer = ScriptedChannel();
    printer.Replies(row.replies);
    EXPECT_EQ(Run(160, {"1", "2"}), kReplied);
    EXPECT_EQ(Wire(), row.wire);
    EXPECT_EQ(Record(), row.record);
  }
}

// What comes back, attempt by attempt; what the transaction makes of it, and how.
TEST_F(CommandTest, RecoversWithinItsBounds) {
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
    printer.Replies(row.replies);
    const int64_t before = clock.SleptMs();
    EXPECT_EQ(Run(101), row.status);
    EXPECT_EQ(Wire(), row.wire);
    EXPECT_EQ(clock.SleptMs() - before, 1000 * static_cast<int64_t>(Wire().size() - 1));
    EXPECT_EQ(accepted, row.ok);
  }
}

TEST_F(CommandTest, MalformedHeadReachesTheCaller) {
  const auto run = [this] { Run(101); };
  printer.Replies({"Fabc OK"});
  EXPECT_THAT(run, ThrowsMessage<std::invalid_argument>("invalid stoi argument"));
  printer.Replies({"F99999999999 OK"});
  EXPECT_THAT(run, ThrowsMessage<std::out_of_range>("stoi argument out of range"));
}

// What is told and returned, by the runner and by the processor of any command.
TEST_F(CommandTest, ARefusalIsAFailureOrAnAnswer) {
  using Connect::Refusal;
  const struct {
    const char* reply;
    Refusal refusal;
    Reason why;
    int result;
    const char* told;
    Strings values;
  } kRows[] = {
      {"F198 OK SSID=<a>", Refusal::kFails, Reason::kNone, NUV_OK, "", {"a"}},
      {"F198 NG SSID=<a>", Refusal::kFails, Reason::kRefused, 29, "29 F198", {"a"}},
      {"F198 NG SSID=<a>", Refusal::kAnswers, Reason::kRefused, NUV_OK, "", {"a"}},
      {"", Refusal::kFails, Reason::kSilence, NUV_FAILED, "-1 F198", {}},
      {" ", Refusal::kFails, Reason::kMalformed, NUV_FAILED, "-1 F198", {}},
      {"F101 OK", Refusal::kAnswers, Reason::kOtherReply, NUV_FAILED, "-2 F198", {}},
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
    EXPECT_EQ(outcome.reason, row.why);
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

TEST_F(CommandTest, OutputsAreFilledAllOrNone) {
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
  printer.Replies({"F107 NG L:300 T:45 R:Job1"});
  EXPECT_EQ(read(), NUV_PRINTER_REFUSED);
  EXPECT_EQ(std::to_string(layers) + name + std::to_string(minutes), "00");
  EXPECT_EQ(ToldBy([&] { EXPECT_EQ(runner.Run(999).code, 999); }), "[NKG]no command F999\n");
}

}  // namespace
}  // namespace Nuv::Command
