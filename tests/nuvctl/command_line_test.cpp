#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

using CommandLineTest = CommandTest;

TEST_F(CommandLineTest, RefusesWrongUsageWithoutTouchingAnyPrinter) {
  const std::string lines =
      "frobnicate;list --port 0;list --port 65536;list --timeout 0;list --index -1;"
      "info --serial A --index 0;info --address printer;info --usb --address 10.0.0.1;send;"
      "raw \r\n;raw F101\r\nF102;nickname a\nb;nickname Lab one;laser-power much;"
      "laser-power 99999999999;z-compensation -;scaling 1 1 1 1 1;scaling 1 1 1 1 1 1 1;"
      "scaling 1 1 1 1 1 nan;jobs --mark -1;jobs --mark 1 --last 2;sensors --laser 0;"
      "watch --interval 999;wifi";
  std::vector<Words> rows = {{}, {"raw", ""}, {"nickname", ""}, {"wifi", "connect", "--open", ""}};
  for (const std::string& line : Split(lines, ';')) rows.push_back(Split(line));
  for (const Words& row : rows) {
    Ends(row, kUsage, "usage");
    EXPECT_TRUE(g_fake.calls.empty());
  }
}

TEST_F(CommandLineTest, HelpVersionAndDebugAreOptions) {
  EXPECT_EQ(CommandRun({"--help"}, system).exit, 0);
  EXPECT_EQ(CommandRun({"--version"}, system).out.rfind("nuvctl ", 0), 0U);
  CommandRun({"list"}, system);
  EXPECT_EQ(system.environment, "");
  CommandRun({"--debug", "list"}, system);
  EXPECT_EQ(system.environment, "NUVCONNECT_DEBUG");
}

TEST_F(CommandLineTest, LetsNoPrinterSteerTheTerminal) {
  g_fake.devices = {{"10.0.0.1", "S\x1b[2J", "M\xFF", "\xC2\x9Bx"}, {"10.0.0.2", "B\r", "", ""}};
  g_fake.reply = "F1 OK\x1b]0;x\x07\r";
  for (const char* line : {"list", "info --index 0", "info", "raw F1 --index 1"}) {
    const CommandRun run = Both(Split(line));
    EXPECT_EQ((run.out + run.err).find_first_of("\x1b\x07\r\x9B"), std::string::npos);
  }
}

TEST_F(CommandLineTest, SendsOneRawLineAndWantsAReply) {
  for (const char* text : {"F101", "F101\n", "F101\r\n"}) {
    g_fake.reply = "F101 OK V:1\r";
    EXPECT_EQ(Both({"raw", text}).out, "F101 OK V:1\n");
    EXPECT_EQ(g_fake.calls.back(), "raw F101\r\n");
    EXPECT_EQ(document["reply"], "F101 OK V:1");
  }
  g_fake.reply = "\r";
  Ends({"raw", "F101"}, kConnectionProblem, "no_answer");
}

TEST_F(CommandLineTest, ReportsAMalformedNumber) {
  g_fake.malformed = true;
  Ends({"status"}, kPrinterFailed, "bad_reply");
}

TEST_F(CommandLineTest, ReportsOutputThatCannotBeWritten) {
  std::ostringstream out, err;
  UseFakeLibrary();
  out.setstate(std::ios::badbit);
  EXPECT_EQ(RunCommandLine({"list"}, out, err, system), kLocalProblem);
  EXPECT_NE(err.str(), "");
}

TEST(ResultErrorTest, EveryResultHasItsExitCodeWordsOfItsOwnAndAdvice) {
  // The exit codes by their numbers: scripts know no names.
  const std::map<int, std::vector<int>> kResultsByExit = {{1, {10, 11, 12, 13, 14, 16, 22, 29, 99}},
                                                          {3, {2}},
                                                          {4, {4, 21}},
                                                          {5, {1, 3, 20}},
                                                          {6, {-1, 23}}};
  std::set<std::string> codes, messages;
  for (const auto& [exit, results] : kResultsByExit) {
    for (const int result : results) {
      const CommandError error = ResultError(result, "Sending");
      EXPECT_TRUE(codes.insert(error.code).second) << result;
      EXPECT_TRUE(messages.insert(error.message).second) << result;
      EXPECT_FALSE(error.hint.empty()) << result;
      EXPECT_EQ(error.exit, exit) << result;
      EXPECT_EQ(error.result, result);
    }
  }
}

// What the exit codes mean is shown by the tests of the commands; here their numbers.
TEST_F(CommandLineTest, ExitCodesAreThoseOfTheManualAndTheHelp) {
  const std::vector<int> kCodes = {kDone,        kPrinterFailed,     kUsage,        kNoPrinter,
                                   kFileProblem, kConnectionProblem, kLocalProblem, kCancelled};
  const std::string help = CommandRun({"--help"}, system).out;
  std::ifstream manual(NUVCTL_MANUAL);
  std::vector<int> documented;
  for (std::string line; std::getline(manual, line);) {
    if (line.rfind("| ", 0) != 0 || line.find_first_not_of("0123456789", 2) != line.find(" |", 2))
      continue;
    documented.push_back(std::stoi(line.substr(2)));
    EXPECT_NE(help.find("\n  " + std::to_string(documented.back()) + "  "), std::string::npos);
  }
  EXPECT_EQ(documented, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 130}));
  EXPECT_EQ(documented, kCodes);
}

TEST_F(CommandLineTest, TheManualHasEverySubcommandOfTheHelp) {
  std::istringstream help(CommandRun({"--help"}, system).out);
  std::ifstream file(NUVCTL_MANUAL);
  const std::string manual(std::istreambuf_iterator<char>(file), {});
  std::string line, name;
  while (std::getline(help, line) && line != "Subcommands:") continue;
  while (std::getline(help, line) && std::istringstream(line) >> name) {
    EXPECT_NE(manual.find("\nnuvctl " + name), std::string::npos) << "no example of " << name;
    EXPECT_NE(manual.find("`" + name), std::string::npos) << "no JSON of " << name;
  }
  EXPECT_FALSE(name.empty());
}

}  // namespace
}  // namespace NuvCtl
