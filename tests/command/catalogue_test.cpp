// A row per command: how its request goes out and how its reply is read.

#include "command/catalogue.h"

#include <gtest/gtest.h>

#include "command/command_runner.h"
#include "command/commands.h"
#include "command/reply_views.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using Strings = std::vector<std::string>;

// Those that no test of an operation or a job sees on the wire.
const struct {
  int32_t code;
  Strings parameters;
  const char* request;
} kRequests[] = {
    {190, {"1"}, "F190 S1"},
    {102, {"1", "2"}, "F102"},
    {104, {"7", "8"}, "F104"},
    {106, {"1", "2"}, "F106 S1 C2"},
    {106, {"1"}, "F106"},
    {108, {"1", "2"}, "F108 S1 R2"},
    {109,
     {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"},
     "F109 X1 Y2 Z3 L4 T5 W6 E7 R8 Q9 P10"},
    {109, {"1"}, "F109"},
    {111, {"1"}, "F111 S1"},
    {159, {"1", "2", "3"}, "F159 S1 V2 C3"},
    {160, {"1", "2"}, "F160 S1 C2"},
    {166, {"1"}, "F166 V1"},
    {191, {"2", "a", "b", "c", "d"}, "F191"},
    {196, {}, "F196"},
    {319, {"1"}, "F319 X1"},
    {332, {"1", "2", "3"}, "F332 S1 V2 C3"},
    {550, {"1", "2"}, "F550 W1 R2"},
};

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<CommandBase> Make(int32_t code, CommandArguments arguments) {
    arguments.clock = &clock;
    return CreateCommand(printer, code, std::move(arguments));
  }

  ScriptedChannel printer;
  ManualClock clock;
};

TEST_F(CatalogueTest, RequestsGoOutAsTheirFormSays) {
  for (const auto& row : kRequests) {
    CommandArguments arguments;
    arguments.parameters = row.parameters;
    EXPECT_EQ(Make(row.code, std::move(arguments))->BuildRequest(),
              std::string(row.request) + "\r\n");
  }
}

const struct {
  int32_t code;
  const char* reply;
  bool ok;
  const char* record;  // "key=value" in the order of the keys
} kReplies[] = {
    {101, "F101 OK M:a\tb\r S:1\r", true, "M=a b|S=1"},
    {101, "F101 OK S:first S:second", true, "S=first"},
    {102, "F102 OK S1 C=4", true, "C=4|S=1"},
    {105, "F105 OK C:1001 S1 R350 V500 QL0001", true, "C=1001|Q=L0001|R=350|S=1|V=500"},
    {157, "F157 OK I3 S9 S10", true, "I=3|S=10"},
    // A blank makes "Room" look like the key R.
    {190, "F190 OK SSID=<My Room = 2> R:80 S:1", true, "R=80|S=1|SSID=My Room = 2"},
    {190, "F190 OK S:1 SSID=<never closed R:80", true, "R=80|S=1|SSID=<never"},
    {190, "F190 OK SSID=<a > b> R:1> S1 C6 <", true, "C=6|S=1|SSID=a > b> R:1"},
    {192, "F192 OK SSID=Lab net IP=10.0.0.2 MAC=02:aa C6 M1 S:1", true,
     "C=6|IP=10.0.0.2|M=1|MAC=02:aa|S=1|SSID=Lab"},
    {197, "F197 OK N:Lab printer: two", true, "N=Lab printer: two|printer="},
    {301, "F301 BUSY OK C_T:1 C_LI:2 ZLT:3", true, "C_LI=2|C_T=1|ZLT=3"},
    {303, "F303 OK LSU:1 a P1:2", true, "LSU=1 a|P1=2"},
    {327, "F327 OK C:1 C1:2 L:3 L34 T:", true, "C=1|C1=2|L=3|L3=4|T="},
    {335, "F335 BUSY OK S:1", false, "S=1"},
    {839, "F839 X OK A:1 T:2", true, "A=1|T=2"},
};

TEST_F(CatalogueTest, RepliesAreReadAsTheirFormSays) {
  for (const auto& row : kReplies) {
    SCOPED_TRACE(row.reply);
    printer.Replies({row.reply});
    CommandArguments arguments;
    bool ok = false;
    arguments.resultCallback = [&](int32_t, int32_t, bool accepted, Strings) { ok = accepted; };
    const auto command = Make(row.code, std::move(arguments));
    EXPECT_EQ(command->Execute(), kReplied);
    EXPECT_EQ(ok, row.ok);
    std::string record;
    for (const auto& [key, value] : command->result()) {
      record += (record.empty() ? "" : "|") + key + "=" + value;
    }
    EXPECT_EQ(record, row.record);
  }
}

TEST(ReplyViewsTest, NamesInBracketsMayHoldAnything) {
  struct Row {
    const char* fields;
    Tokens values;
  };
  const Row rows[] = {
      {"SSID=<Lab net> SSID=<Office>", {"Lab net", "Office"}},
      {"SSID=<x: y=1 > z> SSID=<>", {"x: y=1 > z", ""}},
      {"SSID=<x=y> stray", {"<x=y> stray"}},
      {"SSID=<open SSID=<open too", {"<open", "<open too"}},
      {"SSID=<B\xC3\xBCro 3>", {"B\xC3\xBCro 3"}},
      {"SSID=<<b>> X:1", {"<b>", "1"}},
      {"N:Dental Pink L:7", {"Dental Pink", "7"}},
      {"", {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fields);
    Tokens tokens;
    AppendTokens(std::string("F198 OK ") + row.fields, tokens);
    EXPECT_EQ(FieldValues(tokens), row.values);
  }
}

// The self-test's second line comes when the test is over.
TEST_F(CatalogueTest, SelfTestWaitsForItsSecondLineOnce) {
  struct Row {
    std::vector<std::string> replies;
    std::vector<std::string> wire;
    ResultMap result;
  };
  const std::string request = "F160 S1 C2\r\n";
  const Row rows[] = {
      {{"F160 OK START", "F160 OK FINISH"},
       {request, "<read>"},
       {{"START", "START"}, {"FINISH", "FINISH"}}},
      {{"F160 OK START", ""}, {request, "<read>"}, {{"START", "START"}}},
      {{"F160 OK START\r\nF160 OK FINISH"}, {request}, {{"START", "START"}, {"FINISH", "FINISH"}}},
      {{"F160 OK"}, {request}, {}},
      {{"F160 NG START"}, {request}, {}},
  };
  for (const Row& row : rows) {
    ScriptedChannel channel;
    for (const std::string& reply : row.replies) channel.Replies({reply});
    CommandArguments arguments;
    arguments.parameters = {"1", "2"};
    int delivered = 0;
    arguments.resultCallback = [&](int32_t, int32_t, bool, Strings) { ++delivered; };
    arguments.clock = &clock;
    const auto command = MakeCommand<F160Cmd>(channel, std::move(arguments));
    EXPECT_EQ(command->Execute(), kReplied);
    EXPECT_EQ(channel.Wire(), row.wire);
    EXPECT_EQ(command->result(), row.result);
    EXPECT_EQ(delivered, 1);
  }
}

}  // namespace
}  // namespace Nuv::Command
