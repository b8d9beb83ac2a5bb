// docs/protocol.md is the reference for both ends of the wire: it must have every command and every
// export, and its examples must be what the commands write and read.

#include "tests/support/protocol_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "command/catalogue.h"
#include "command/command_runner.h"
#include "command/commands.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"

namespace Nuv::Command {
namespace {

using ProtocolPage::Codes;
using ProtocolPage::Quoted;
using ProtocolPage::Row;
using ProtocolPage::Rows;
using ProtocolPage::Strings;

template <class... Classes>
std::unique_ptr<CommandBase> MakeOneOf(int code, Connect::IChannel& channel,
                                       const CommandArguments& arguments) {
  std::unique_ptr<CommandBase> made = CreateCommand(channel, code, arguments);
  ((Classes::kCode == code ? void(made = MakeCommand<Classes>(channel, arguments)) : void()), ...);
  return made;
}

// The factory's, and those that it leaves to others.
constexpr auto kMake = MakeOneOf<F140Cmd, F141Cmd, F353Cmd, F354Cmd, F355Cmd, F356Cmd, F367Cmd,
                                 F369Cmd, F370Cmd, F500Cmd, F501Cmd, F508Cmd>;

// The example for this code, which in a row of several codes is that of the first.
std::string Example(const Row& row, const char* column, int code) {
  return "F" + std::to_string(code) + Quoted(row[column]).at(0).substr(4);
}

// The parameters of a request, tags and brackets taken off.
Strings Parameters(const CommandRow& command, const std::string& request) {
  const char* form = " S(.*)";
  if (command.request == Request::kTagged) form = " [A-Z](\\S*)";
  if (command.request == Request::kNamed) form = " [A-Z](?:<(.*)>|(\\S*))";
  if (command.code == 191) form = " S(2)|S(.*) C(.*) D(.*) SSID=<(.*)> KEY=<(.*)>";
  if (command.code == 196) form = " (.*)";
  if (command.code == 355) form = " M(.*)=(.*)";
  if (command.code == 367) form = " =(.*)";
  Strings parameters;
  for (const Strings& found : ProtocolPage::Find(request, form)) {
    std::copy_if(found.begin(), found.end(), std::back_inserter(parameters),
                 [](const std::string& each) { return !each.empty(); });
  }
  return parameters;
}

TEST(ProtocolPageTest, RequestsAreWhatTheCommandsWrite) {
  ScriptedChannel channel;
  std::set<int> codes;
  for (const Row& row : Rows("Code")) {
    for (const int code : Codes(row["Code"])) {
      codes.insert(code);
      const std::string request = Example(row, "Request", code);
      CommandArguments arguments;
      ASSERT_LT(RowPlace(code), std::size(kRows)) << row.Where() << "no command is " << code;
      arguments.parameters = Parameters(kRows[RowPlace(code)], request);
      const auto command = kMake(code, channel, arguments);
      ASSERT_NE(command, nullptr) << row.Where() << "no class is " << code;
      EXPECT_EQ(command->BuildRequest(), request + "\r\n") << row.Where() << "request of " << code;
    }
  }
  for (const CommandRow& each : kRows) {
    EXPECT_EQ(codes.count(each.code), 1U) << "docs/protocol.md has no row of " << each.code;
  }
}

// The rows that tell how each code's reply is read; 102 has two.
std::map<int, std::vector<Row>> ReadAs() {
  std::map<int, std::vector<Row>> forms;
  for (const Row& row : Rows("Read as")) {
    for (const int code : Codes(row["Codes"])) forms[code].push_back(row);
    if (row["Codes"] != "all others") continue;
    for (const CommandRow& each : kRows) forms.try_emplace(each.code, 1, row);
  }
  return forms;
}

struct Reading {
  Strings values;
  ResultMap record;
  bool operator==(const Reading& other) const {
    return values == other.values && record == other.record;
  }
};
void PrintTo(const Reading& reading, std::ostream* out) {
  *out << testing::PrintToString(reading.values) << testing::PrintToString(reading.record);
}

bool Begins(const std::string& text, const char* with) { return text.rfind(with, 0) == 0; }

// How a reply must be read, by the simplest rule that the examples allow.
Reading Read(const std::string& reply, const std::vector<Row>& forms) {
  Reading reading;
  for (const Row& row : forms) {
    const std::string form = row["Read as"];
    if (Begins(form, "only accepted")) continue;
    const bool letters = Begins(form, "letter-tagged");
    const bool keyed = letters ? Begins(form, "letter-tagged, by key")
                               : Begins(form, "named") || reply.find('=') == std::string::npos;
    for (const Strings& each :
         ProtocolPage::Find(reply.substr(7), letters ? " ([A-Z])(\\S*)()"
                                                     : " ([A-Z][A-Z0-9_]*)[:=](?:<(.*?)>|(.*?))"
                                                       "(?= [A-Z][A-Z0-9_]*[:=]|$)")) {
      if (!Begins(form, "named")) reading.values.push_back(each[1] + each[2]);
      if (keyed) reading.record.emplace(each[0], each[1] + each[2]);
    }
  }
  return reading;
}

class ProtocolPageReplyTest : public ::testing::Test {
 protected:
  // What the command of this code makes of a reply.
  Reading Reply(int code, const std::string& reply) {
    ScriptedChannel channel;
    channel.Replies({reply});
    Reading reading;
    CommandArguments arguments;
    arguments.clock = &clock;
    arguments.resultCallback = [&](int, int, bool ok, Strings values) {
      accepted = ok;
      reading.values = std::move(values);
    };
    const auto command = kMake(code, channel, arguments);
    EXPECT_EQ(command->Execute(), kReplied) << reply;
    reading.record = command->Result();
    return reading;
  }

  ManualClock clock;
  bool accepted = false;
};

TEST_F(ProtocolPageReplyTest, RepliesAreReadAsItSays) {
  const auto forms = ReadAs();
  for (const Row& row : Rows("Code")) {
    for (const int code : Codes(row["Code"])) {
      if (forms.count(code) == 0 || code == 160) continue;  // told above; markers on two lines
      const std::vector<Row>& form = forms.at(code);
      const std::string readAs = form.front()["Read as"];
      const std::string where = ", read as " + form.front().Where() + readAs;
      const std::string example = Example(row, "Reply", code);
      const bool isBare = example.size() == 7;
      EXPECT_EQ(Reply(code, example), Read(example, form)) << row.Where() << example << where;
      EXPECT_TRUE(accepted) << row.Where() << example;
      EXPECT_EQ(Read(example, form) == Reading{}, isBare) << row.Where() << example << where;
      if (!isBare) continue;  // else all forms would read it alike
      const std::string more = example + (Begins(readAs, "letter") ? " A1 B2" : " A:1 B:2");
      EXPECT_EQ(Reply(code, more), Read(more, form)) << row.Where() << more << where;
    }
  }
}

TEST_F(ProtocolPageReplyTest, AcceptsWhereItSays) {
  const std::vector<Row> rows = Rows("Accepted when `OK` is");
  ASSERT_EQ(rows.size(), 2U);
  const std::vector<int> anywhere = Codes(rows[0]["Codes"]);
  for (const CommandRow& each : kRows) {
    const std::string head = "F" + std::to_string(each.code);
    Reply(each.code, head + " BUSY OK");
    EXPECT_EQ(accepted, std::count(anywhere.begin(), anywhere.end(), each.code) == 1)
        << rows[0].Where() << each.code;
    Reply(each.code, head + " NG");
    EXPECT_FALSE(accepted) << each.code;
  }
}

TEST(ProtocolPageTest, HasEveryExport) {
  std::ifstream file(NUV_SOURCE_FOLDER "/docs/protocol.md");
  std::ostringstream page;
  page << file.rdbuf();
  std::ifstream exports(NUV_SOURCE_FOLDER "/tests/api/exports.txt");
  int count = 0;
  for (std::string name; std::getline(exports, name); ++count) {
    EXPECT_NE(page.str().find("`" + name + "`"), std::string::npos) << "no row has " << name;
  }
  EXPECT_GE(count, 77) << "exports are added, never taken away";
}

}  // namespace
}  // namespace Nuv::Command
