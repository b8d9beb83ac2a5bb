// A row per command: how its request goes out and how its reply is read.

#include "command/catalogue.h"

#include <gtest/gtest.h>

#include <map>

#include "command/command_factory.h"
#include "command/commands.h"
#include "command/reply_views.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using Strings = std::vector<std::string>;

struct RequestRow {
  int32_t code;
  Strings parameters;
  const char* request;
};

const RequestRow kRequests[] = {
    {190, {"1"}, "F190 S1"},
    {102, {"1", "2"}, "F102"},
    {103,
     {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"},
     "F103 S1 L2 T3 R4 V5 C6 E7 H8 Y9 U10 P11"},
    {104, {"7"}, "F104 S7"},
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
    {191, {"1", "a", "b", "Lab net", "k e y"}, "F191 S1 Ca Db SSID=<Lab net> KEY=<k e y>"},
    {191, {"2", "a", "b", "c", "d"}, "F191"},
    {196, {"Lab printer 2"}, "F196 Lab printer 2"},
    {196, {}, "F196"},
    {319, {"1"}, "F319 X1"},
    {332, {"1", "2", "3"}, "F332 S1 V2 C3"},
    {355, {"a", "b"}, "F355 Ma=b"},
    {355, {"a"}, "F355"},
    {367, {"a"}, "F367 =a"},
    {367, {}, "F367"},
    {500,
     {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "a b"},
     "F500 S1 L2 T3 R4 V5 C6 E7 H8 Y9 U10 P11 N<a b>"},
    {501, {"1", "a b"}, "F501 S1 N<a b>"},
    {508, {"1", "2", "a b"}, "F508 S1 V2 N<a b>"},
    {550, {"1", "2"}, "F550 W1 R2"},
};

// The classes that their processors and the framework make for themselves.
template <class Class>
std::unique_ptr<CommandBase> Direct(ScriptedChannel& printer, CommandArguments arguments) {
  return MakeCommand<Class>(printer, std::move(arguments));
}
const std::map<int32_t, decltype(&Direct<F355Cmd>)> kDirect = {
    {355, Direct<F355Cmd>}, {367, Direct<F367Cmd>}, {369, Direct<F369Cmd>},
    {500, Direct<F500Cmd>}, {501, Direct<F501Cmd>}, {508, Direct<F508Cmd>},
};

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<CommandBase> Make(int32_t code, CommandArguments arguments) {
    arguments.clock = &clock;
    const auto direct = kDirect.find(code);
    return direct == kDirect.end() ? CreateCommand(printer, code, std::move(arguments))
                                   : direct->second(printer, std::move(arguments));
  }

  ScriptedChannel printer;
  ManualClock clock;
};

TEST_F(CatalogueTest, RequestsGoOutAsTheirFormSays) {
  for (const RequestRow& row : kRequests) {
    CommandArguments arguments;
    arguments.parameters = row.parameters;
    EXPECT_EQ(Make(row.code, std::move(arguments))->BuildRequest(),
              std::string(row.request) + "\r\n");
  }
}

struct ReplyRow {
  int32_t code;
  const char* reply;
  bool ok;
  ResultMap result;
};

const ReplyRow kReplies[] = {
    {101, "F101 OK M:a\tb\r S:1\r", true, {{"M", "a b"}, {"S", "1"}}},
    {101, "F101 OK S:first S:second", true, {{"S", "first"}}},
    {102,
     "F102 OK S:1 L:5 T:7 C:45% R:job",
     true,
     {{"S", "1"}, {"L", "5"}, {"T", "7"}, {"C", "45%"}, {"R", "job"}}},
    {102, "F102 OK S1 C=4", true, {{"S", "1"}, {"C", "4"}}},
    {105,
     "F105 OK C:1001 S1 R350 V500 QL0001",
     true,
     {{"C", "1001"}, {"S", "1"}, {"R", "350"}, {"V", "500"}, {"Q", "L0001"}}},
    {157, "F157 OK I3 S9 S10", true, {{"I", "3"}, {"S", "10"}}},
    // A blank makes "Room" look like the key R.
    {190,
     "F190 OK SSID=<My Room = 2> R:80 S:1",
     true,
     {{"SSID", "My Room = 2"}, {"R", "80"}, {"S", "1"}}},
    {190,
     "F190 OK S:1 SSID=<never closed R:80",
     true,
     {{"SSID", "<never"}, {"S", "1"}, {"R", "80"}}},
    {190,
     "F190 OK SSID=<a > b> R:1> S1 C6 <",
     true,
     {{"SSID", "a > b> R:1"}, {"S", "1"}, {"C", "6"}}},
    {192,
     "F192 OK SSID=Lab net IP=10.0.0.2 MAC=02:aa C6 M1 S:1",
     true,
     {{"SSID", "Lab"}, {"IP", "10.0.0.2"}, {"MAC", "02:aa"}, {"C", "6"}, {"M", "1"}, {"S", "1"}}},
    {197, "F197 OK N:Lab printer: two", true, {{"N", "Lab printer: two"}, {"printer", ""}}},
    {301, "F301 BUSY OK C_T:1 C_LI:2 ZLT:3", true, {{"C_T", "1"}, {"C_LI", "2"}, {"ZLT", "3"}}},
    {303, "F303 OK LSU:1 a P1:2", true, {{"LSU", "1 a"}, {"P1", "2"}}},
    {327,
     "F327 OK C:1 C1:2 L:3 L34 T:",
     true,
     {{"C", "1"}, {"C1", "2"}, {"L", "3"}, {"L3", "4"}, {"T", ""}}},
    {335, "F335 BUSY OK S:1", false, {{"S", "1"}}},
    {369, "F369 BUSY OK X:1.0,2.0", true, {{"X", "1.0,2.0"}}},
    {839, "F839 X OK A:1 T:2", true, {{"A", "1"}, {"T", "2"}}},
};

TEST_F(CatalogueTest, RepliesAreReadAsTheirFormSays) {
  for (const ReplyRow& row : kReplies) {
    SCOPED_TRACE(row.reply);
    printer.Replies({row.reply});
    CommandArguments arguments;
    bool ok = false;
    arguments.resultCallback = [&](int32_t, int32_t, bool accepted, Strings) { ok = accepted; };
    const auto command = Make(row.code, std::move(arguments));
    EXPECT_EQ(command->Execute(), kReplied);
    EXPECT_EQ(ok, row.ok);
    EXPECT_EQ(command->result(), row.result);
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
