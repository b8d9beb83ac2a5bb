// docs/protocol.md is the reference for both ends of the wire, so it must have every command and
// every export, and its example replies must be what the commands read.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "command/catalogue.h"
#include "command/command_base.h"

namespace Nuv::Command {
namespace {

std::string ReadFile(const std::string& name) {
  std::ifstream file(NUV_SOURCE_FOLDER "/" + name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Any row of the catalogue as a command, for its views.
class AnyCommand : public TableCommand {
 public:
  explicit AnyCommand(const CommandRow& row) : TableCommand(row) {}
};

TEST(ProtocolPageTest, HasEveryCode) {
  const std::string page = ReadFile("docs/protocol.md");
  // The first column of the command tables: one code or several.
  const std::regex row("\n\\| (\\d{3}(?:, \\d{3})*) \\|");
  std::set<int32_t> codes;
  for (std::sregex_iterator each(page.begin(), page.end(), row), end; each != end; ++each) {
    std::istringstream list((*each)[1]);
    for (std::string code; std::getline(list, code, ',');) codes.insert(std::stoi(code));
  }
  for (const CommandRow& each : kRows) EXPECT_EQ(codes.count(each.code), 1U) << each.code;
  EXPECT_EQ(codes.size(), std::size(kRows)) << "a code that no command has";
}

TEST(ProtocolPageTest, HasEveryExport) {
  const std::string page = ReadFile("docs/protocol.md");
  std::istringstream exports(ReadFile("tests/api/exports.txt"));
  int count = 0;
  for (std::string name; std::getline(exports, name); ++count) {
    EXPECT_NE(page.find("`" + name + "`"), std::string::npos) << name;
  }
  EXPECT_EQ(count, 77);
}

TEST(ProtocolPageTest, ExampleRepliesAreReadInFull) {
  const std::string page = ReadFile("docs/protocol.md");
  const std::regex example("`(F(\\d+) OK[^`]*)`");
  int examples = 0;
  for (std::sregex_iterator each(page.begin(), page.end(), example), end; each != end; ++each) {
    const std::string reply = (*each)[1];
    const int32_t code = std::stoi((*each)[2]);
    if (code == 160 || code == 195) continue;  // markers; a search answer
    ++examples;
    SCOPED_TRACE(reply);
    ASSERT_LT(RowPlace(code), std::size(kRows));
    AnyCommand command(kRows[RowPlace(code)]);
    EXPECT_EQ(command.ParseReply(reply), kReplied);
    const ResultMap record = command.GetResultMap();
    const size_t fields = record.empty() ? command.GetReplyValues().size() : record.size();
    const bool hasFields = std::count(reply.begin(), reply.end(), ' ') > 1;
    EXPECT_EQ(fields > 0, hasFields);
    for (const auto& [key, value] : record) EXPECT_FALSE(value.empty()) << key;
  }
  EXPECT_GT(examples, 40);
}

}  // namespace
}  // namespace Nuv::Command
