#include <set>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

using CommandLineTest = CommandTest;

TEST_F(CommandLineTest, RefusesWrongUsageWithoutTouchingAnyPrinter) {
  const std::string lines =
      "frobnicate;list --port 0;list --port 65536;list --timeout 0;list --index -1;"
      "info --serial A --index 0;info --address a/b;info --address 1.2.3.4:x;"
      "info --usb --address 10.0.0.1;send;raw \r\n;raw F101\r\nF102;nickname a\nb;"
      "nickname Lab one;nickname --clear x;laser-power much;laser-power 101;"
      "laser-power 99999999999;z-compensation -;z-compensation 501;scaling 1 1 1 1 1;"
      "scaling 1 1 1 1 1 1 1;scaling 1 1 1 1 1 nan;scaling 1 1 1 1 1 0;scaling 1 1 1 1 1 1,5;"
      "jobs --mark -1;jobs --mark 1 --last 2;sensors --laser 0;sensors --laser 5;"
      "watch --interval 999;wifi;printers;printers add x;printers add;"
      "info --printer a --printer b;nickname x --index 0;cancel;scaling 2 1 1 1 1 1";
  std::vector<Words> rows = {{},
                             {"raw", ""},
                             {"nickname", ""},
                             {"nickname", "  "},
                             {"laser-power", ""},
                             {"wifi", "connect", "--open", ""},
                             {"printers", "add", "a\x1b", "--serial", "S"},
                             {"printers", "add", "", "--serial", "S"}};
  for (const std::string& line : Split(lines, ';')) rows.push_back(Split(line));
  One();
  for (const Words& row : rows) Ends(row, kUsage, "usage");
  EXPECT_EQ(simulator->Totals().connections, 0U);
}

TEST_F(CommandLineTest, SaysWhatWasMeant) {
  const struct {
    const char* line;
    const char* told;
  } rows[] = {{"statsu", "did you mean status?\n"},
              {"printers lst", "did you mean list?\n"},
              {"nonsense", "\"nonsense\" is no command of nuvctl.\n"},
              {"nickname Lab one",
               "Not expected: one.\nNames with blanks need quotes. Run 'nuvctl "
               "nickname --help'"},
              {"laser-power 500", "Write a whole number, percent, 0 to 100."},
              {"scaling 1 1 1 1,002 1 1", "\"1,002\" is no factor for Y2"},
              {"sensors --laser 9", "lasers 1 to 4"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Run(row.line), kUsage);
    EXPECT_THAT(err, HasSubstr(row.told));
  }
}

TEST_F(CommandLineTest, HelpAndVersionAreAnswers) {
  EXPECT_EQ(Run("--version"), kDone);
  EXPECT_EQ(out.rfind("nuvctl ", 0), 0U);
  Run("send --help");
  const std::string help = out;
  EXPECT_EQ(Run("help send"), kDone);
  EXPECT_EQ(out, help);
  EXPECT_THAT(help, HasSubstr("--dry-run"));
}

TEST_F(CommandLineTest, LetsNoPrinterSteerTheTerminal) {
  auto config = Config("S\x1b[2J", "127.0.0.1", "M\xFF");
  config.nickname = "\xC2\x9Bx";
  Start({config});
  for (const char* line : {"list", "info", "info --all", "raw F101", "nickname y"}) {
    Run(line);
    EXPECT_EQ((out + err).find_first_of("\x1b\x07\r\x9B"), std::string::npos) << out << err;
    Json(line);
  }
}

TEST_F(CommandLineTest, SendsOneRawLine) {
  One();
  for (const char* line : {"F102", "F102\n", "F102\r\n"}) {
    EXPECT_EQ(Run(Words{"raw", line}), kDone);
    EXPECT_EQ(out, "F102 OK S:0\n");
  }
  Commits("silent,code=102");
  Ends("raw F102 --timeout 500", kConnectionProblem, "no_answer");
}

TEST_F(CommandLineTest, ReportsOutputThatCannotBeWritten) {
  std::ostringstream written, told;
  written.setstate(std::ios::badbit);
  One();
  EXPECT_EQ(RunCommandLine({"list"}, written, told, system), kLocalProblem);
  EXPECT_NE(told.str(), "");
}

TEST(FailureTest, EveryResultHasItsExitCodeAndWords) {
  const std::vector<std::pair<nuv::Result, int>> rows = {{nuv::Result::kInvalidArgument, 2},
                                                         {nuv::Result::kBadHandle, 6},
                                                         {nuv::Result::kNotFound, 3},
                                                         {nuv::Result::kUnreachable, 5},
                                                         {nuv::Result::kNoAnswer, 5},
                                                         {nuv::Result::kTimeLimit, 5},
                                                         {nuv::Result::kLost, 5},
                                                         {nuv::Result::kUnreadable, 1},
                                                         {nuv::Result::kRefused, 1},
                                                         {nuv::Result::kCancelled, 130},
                                                         {nuv::Result::kBadFile, 4},
                                                         {nuv::Result::kNotFit, 8},
                                                         {nuv::Result::kUnconfirmed, 5},
                                                         {nuv::Result::kSystem, 6}};
  std::set<std::string> messages;
  for (const auto& [result, exit] : rows) {
    const CommandError error = FailureOf(nuv::Error(result, ""), "Sending");
    EXPECT_TRUE(messages.insert(error.message).second) << error.message;
    EXPECT_EQ(error.exit, exit) << error.message;
    EXPECT_EQ(error.result, result);
  }
}

// What the exit codes mean is shown by the tests of the commands; here their numbers.
TEST_F(CommandLineTest, ExitCodesAndCommandsAreThoseOfTheManualAndTheHelp) {
  const std::vector<int> kCodes = {kDone,        kPrinterFailed,     kUsage,        kNoPrinter,
                                   kFileProblem, kConnectionProblem, kLocalProblem, kSomeFailed,
                                   kNotFit,      kCancelled};
  Run("--help");
  std::ifstream file(NUVCTL_MANUAL);
  const std::string manual(std::istreambuf_iterator<char>(file), {});
  std::vector<int> documented;
  for (const std::string& line : Split(manual, '\n')) {
    if (line.rfind("| ", 0) != 0 || line.find_first_not_of("0123456789", 2) != line.find(" |", 2))
      continue;
    documented.push_back(std::stoi(line.substr(2)));
    EXPECT_THAT(out, HasSubstr("\n  " + std::to_string(documented.back()) + "  "));
  }
  EXPECT_EQ(documented, kCodes);
  int commands = 0;
  bool listed = false;
  for (const std::string& line : Split(out.substr(0, out.find("Examples:")), '\n')) {
    listed = listed || line == "Finding printers:";
    if (!listed || line.rfind("  ", 0) != 0) continue;
    const std::string name = Split(line.substr(2)).front();
    ++commands;
    EXPECT_THAT(manual, HasSubstr("\nnuvctl " + name)) << "no example";
    EXPECT_THAT(manual, HasSubstr("`" + name)) << "no JSON";
  }
  EXPECT_GT(commands, 20);
}

}  // namespace
}  // namespace NuvCtl
