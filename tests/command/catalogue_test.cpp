// How requests go out and replies are read where it is not as in the examples of docs/protocol.md.

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

// Other counts of parameters than docs/protocol.md shows, and tags that no operation uses.
const struct {
  int code;
  Strings parameters;
  const char* request;
} kRequests[] = {
    {102, {"1", "2"}, "F102"},
    {104, {"7", "8"}, "F104"},
    {106, {"1"}, "F106"},
    {109, {"1"}, "F109"},
    {159, {"1", "2", "3"}, "F159 S1 V2 C3"},
    {191, {"2", "a", "b", "c", "d"}, "F191"},
    {196, {}, "F196"},
    {332, {"1", "2", "3"}, "F332 S1 V2 C3"},
};

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<CommandBase> Make(int code, CommandArguments arguments) {
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
  int code;
  const char* reply;
  const char* record;  // "key=value" in the order of the keys
} kReplies[] = {
    {101, "F101 OK M:a\tb\r S:1\r", "M=a b|S=1"},
    {101, "F101 OK S:first S:second", "S=first"},
    {102, "F102 OK S1 C=4", "C=4|S=1"},
    {157, "F157 OK I3 S9 S10", "I=3|S=10"},
    // A blank makes "Room" look like the key R.
    {190, "F190 OK SSID=<My Room = 2> R:80 S:1", "R=80|S=1|SSID=My Room = 2"},
    {190, "F190 OK S:1 SSID=<never closed R:80", "R=80|S=1|SSID=<never"},
    {190, "F190 OK SSID=<a > b> R:1> S1 C6 <", "C=6|S=1|SSID=a > b> R:1"},
    {192, "F192 OK SSID=Lab net IP=10.0.0.2 MAC=02:aa C6 M1 S:1",
     "C=6|IP=10.0.0.2|M=1|MAC=02:aa|S=1|SSID=Lab"},
    {197, "F197 OK N:Lab printer: two", "N=Lab printer: two|printer="},
    {303, "F303 OK LSU:1 a P1:2", "LSU=1 a|P1=2"},
    {327, "F327 OK C:1 C1:2 L:3 L34 T:", "C=1|C1=2|L=3|L3=4|T="},
};

TEST_F(CatalogueTest, RepliesAreReadAsTheirFormSays) {
  for (const auto& row : kReplies) {
    SCOPED_TRACE(row.reply);
    printer.Replies({row.reply});
    CommandArguments arguments;
    arguments.resultCallback = [](int, int, bool, const Strings&) {};
    const auto command = Make(row.code, std::move(arguments));
    EXPECT_EQ(command->Execute(), kReplied);
    std::string record;
    for (const auto& [key, value] : command->Result()) {
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
    arguments.resultCallback = [&](int, int, bool, Strings) { ++delivered; };
    arguments.clock = &clock;
    const auto command = MakeCommand<F160Cmd>(channel, std::move(arguments));
    EXPECT_EQ(command->Execute(), kReplied);
    EXPECT_EQ(channel.Wire(), row.wire);
    EXPECT_EQ(command->Result(), row.result);
    EXPECT_EQ(delivered, 1);
  }
}

}  // namespace
}  // namespace Nuv::Command
