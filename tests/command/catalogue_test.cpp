// A row per command: how its request goes out and how its reply is read.

#include "command/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

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
    {101, {}, "F101"},
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
    {169, {"1"}, "F169 S1"},
    {171, {"5"}, "F171 S5"},
    {174, {"3"}, "F174 S3"},
    {186, {"2"}, "F186 L2"},
    {191, {"2"}, "F191 S2"},
    {191, {"1", "a", "b", "Lab net", "k e y"}, "F191 S1 Ca Db SSID=<Lab net> KEY=<k e y>"},
    {191, {"2", "a", "b", "c", "d"}, "F191"},
    {196, {"Lab printer 2"}, "F196 Lab printer 2"},
    {196, {}, "F196"},
    {303, {"1"}, "F303 S1"},
    {319, {"1"}, "F319 X1"},
    {332, {"1", "2", "3"}, "F332 S1 V2 C3"},
    {355, {"a", "b"}, "F355 Ma=b"},
    {355, {"a"}, "F355"},
    {367, {"a"}, "F367 =a"},
    {367, {}, "F367"},
    {370, {"1,2", "3,4", "5,6"}, "F370 X1,2 Y3,4 Z5,6"},
    {500,
     {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "a b"},
     "F500 S1 L2 T3 R4 V5 C6 E7 H8 Y9 U10 P11 N<a b>"},
    {501, {"1", "a b"}, "F501 S1 N<a b>"},
    {504, {"1"}, "F504 A1"},
    {506, {"1", "2", "f.bin"}, "F506 S1 A2 Cf.bin"},
    {508, {"1", "2", "a b"}, "F508 S1 V2 N<a b>"},
    {550, {"1", "2"}, "F550 W1 R2"},
};

// The classes that their processors and the framework make for themselves.
std::unique_ptr<CommandBase> MakeDirect(ScriptedChannel& printer, int32_t code,
                                        CommandArguments arguments) {
  switch (code) {
    case 140:
      return MakeCommand<F140Cmd>(printer, std::move(arguments));
    case 141:
      return MakeCommand<F141Cmd>(printer, std::move(arguments));
    case 353:
      return MakeCommand<F353Cmd>(printer, std::move(arguments));
    case 354:
      return MakeCommand<F354Cmd>(printer, std::move(arguments));
    case 355:
      return MakeCommand<F355Cmd>(printer, std::move(arguments));
    case 356:
      return MakeCommand<F356Cmd>(printer, std::move(arguments));
    case 367:
      return MakeCommand<F367Cmd>(printer, std::move(arguments));
    case 369:
      return MakeCommand<F369Cmd>(printer, std::move(arguments));
    case 370:
      return MakeCommand<F370Cmd>(printer, std::move(arguments));
    case 500:
      return MakeCommand<F500Cmd>(printer, std::move(arguments));
    case 501:
      return MakeCommand<F501Cmd>(printer, std::move(arguments));
    case 508:
      return MakeCommand<F508Cmd>(printer, std::move(arguments));
    default:
      return nullptr;
  }
}

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<CommandBase> Make(int32_t code, CommandArguments arguments) {
    arguments.clock = &clock;
    const bool direct = kRows[RowPlace(code)].maker == Maker::kDirect;
    return direct ? MakeDirect(printer, code, std::move(arguments))
                  : CreateCommand(printer, code, std::move(arguments));
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

TEST_F(CatalogueTest, EveryCodeHasItsClassAndNoOther) {
  for (const CommandRow& row : kRows) {
    const auto command = Make(row.code, {});
    ASSERT_NE(command, nullptr) << row.code;
    EXPECT_EQ(command->GetCode(), row.code);
    const std::string head = "F" + std::to_string(row.code);
    EXPECT_EQ(command->BuildRequest(), head + "\r\n");
  }
  for (const int32_t unknown : {0, -101, 100, 113, 140, 356, 369, 500, 508, 840, 1010}) {
    EXPECT_EQ(CreateCommand(printer, unknown, {}), nullptr) << unknown;
  }
}

struct ReplyRow {
  int32_t code;
  const char* reply;
  bool ok;
  ResultMap result;
};

const ReplyRow kReplies[] = {
    {101, "F101 OK V:1.2 N:abc", true, {{"V", "1.2"}, {"N", "abc"}}},
    {101,
     "F101 OK V:1 N:Lab two M:BEGO VARSEO XS S:B1 C:7 L:3 T:9 R:x",
     true,
     {{"V", "1"},
      {"N", "Lab two"},
      {"M", "BEGO VARSEO XS"},
      {"S", "B1"},
      {"C", "7"},
      {"L", "3"},
      {"T", "9"},
      {"R", "x"}}},
    {101, "F101 OK M:a\tb\r S:1\r", true, {{"M", "a b"}, {"S", "1"}}},
    {101, "F101 OK S:first S:second", true, {{"S", "first"}}},
    {102,
     "F102 OK S:1 L:5 T:7 C:45% R:job",
     true,
     {{"S", "1"}, {"L", "5"}, {"T", "7"}, {"C", "45%"}, {"R", "job"}}},
    {102, "F102 OK S1 C=4", true, {{"S", "1"}, {"C", "4"}}},
    {105,
     "F105 OK S:0 R:120 C:Dental Pink V:500 Q:L-77",
     true,
     {{"S", "0"}, {"R", "120"}, {"C", "Dental Pink"}, {"V", "500"}, {"Q", "L-77"}}},
    {117, "F117 OK S:65536", true, {{"S", "65536"}}},
    {120, "F120 OK S3 T25", true, {{"S", "3"}, {"T", "25"}}},
    {157, "F157 OK I3 S9 S10", true, {{"I", "3"}, {"S", "10"}}},
    {160, "F160 OK START", true, {{"START", "START"}}},
    {160, "F160 OK START FINISH", true, {{"START", "START"}, {"FINISH", "FINISH"}}},
    {160, "F160 NG START", false, {}},
    {354,
     "F354 OK V:1 N:Lab one M:BEGO VARSEO XS S:3D C:2 D:20240131",
     true,
     {{"V", "1"},
      {"N", "Lab one"},
      {"M", "BEGO VARSEO XS"},
      {"S", "3D"},
      {"C", "2"},
      {"D", "20240131"}}},
    {708, "F708 OK H:1234", true, {{"H", "1234"}}},
    {190, "F190 OK SSID=<Lab> S:1", true, {{"SSID", "Lab"}, {"S", "1"}}},
    // A blank makes "Room" look like the key R.
    {190,
     "F190 OK SSID=<My Room = 2> R:80 S:1",
     true,
     {{"SSID", "My Room = 2"}, {"R", "80"}, {"S", "1"}}},
    {190,
     "F190 OK S:1 SSID=<never closed R:80",
     true,
     {{"SSID", "<never"}, {"S", "1"}, {"R", "80"}}},
    {190, "F190 OK S:0", true, {{"S", "0"}}},
    {192,
     "F192 OK SSID=Lab net IP=10.0.0.2 SUB=255.0.0.0 MAC=02:00 S:1",
     true,
     {{"SSID", "Lab net"}, {"IP", "10.0.0.2"}, {"SUB", "255.0.0.0"}, {"MAC", "02:00"}, {"S", "1"}}},
    {197, "F197 OK N:Lab printer: two", true, {{"N", "Lab printer: two"}, {"printer", ""}}},
    {301, "F301 BUSY OK C_T:1 C_LI:2 ZLT:3", true, {{"C_T", "1"}, {"C_LI", "2"}, {"ZLT", "3"}}},
    {303, "F303 OK LSU:1 P1:2 P5:6", true, {{"LSU", "1"}, {"P1", "2"}, {"P5", "6"}}},
    {327, "F327 OK C:1 C1:2 L:3 L3:4", true, {{"C", "1"}, {"C1", "2"}, {"L", "3"}, {"L3", "4"}}},
    {335, "F335 BUSY OK S:1", false, {{"S", "1"}}},
    {356, "F356 OK N:Dental Pink L:77", true, {{"N", "Dental Pink"}, {"L", "77"}}},
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

// Commands whose fields are told apart by their place, not by key.
TEST_F(CatalogueTest, ValuesByPlace) {
  const std::pair<const char*, Strings> rows[] = {
      {"F140 OK SB123", {"B123"}},
      {"F159 OK S0 V80", {"0", "80"}},
      {"F166 OK V2", {"2"}},
      {"F186 OK L12 H980 A512", {"12", "980", "512"}},
      {"F188 OK A28 T30", {"28", "30"}},
      {"F189 OK RDone", {"Done"}},
      {"F197 OK N:Lab: 2 = x", {"Lab: 2 = x"}},
      {"F353 OK S:0 M:512", {"0", "512"}},
      {"F355 OK M:1001", {"1001"}},
      {"F367 OK N:crown 2.nuv", {"crown 2.nuv"}},
      {"F501 OK N:<a b>", {"a b"}},
  };
  for (const auto& [reply, values] : rows) {
    SCOPED_TRACE(reply);
    printer.Replies({reply});
    CommandArguments arguments;
    Strings read;
    arguments.resultCallback = [&](int32_t, int32_t, bool, Strings all) { read = std::move(all); };
    Make(std::stoi(std::string(reply).substr(1)), std::move(arguments))->Execute();
    EXPECT_EQ(read, values);
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

TEST(ReplyViewsTest, AnOversizedReplyIsReadInFull) {
  constexpr int kFields = 20000;
  std::string reply = "F301 OK";
  for (int i = 0; i < kFields; ++i) reply += " X:" + std::to_string(i);
  reply += " ZLT:9";
  Tokens tokens;
  AppendTokens(reply, tokens);
  EXPECT_EQ(tokens.size(), static_cast<size_t>(kFields) + 3);
  const Record record = kRows[RowPlace(301)].record;
  EXPECT_EQ(ReadRecord(tokens, record.keys, record.count), (ResultMap{{"ZLT", "9"}}));
}

}  // namespace
}  // namespace Nuv::Command
