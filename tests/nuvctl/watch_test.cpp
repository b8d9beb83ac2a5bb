#include "command_fixture.h"
#include "print_watch.h"

namespace nuvctl {
namespace {

using WatchTest = CommandTest;

TEST_F(WatchTest, WritesALinePerChangeUntilThePrintEnds) {
  const std::string kLayer12 = "printing, layer 12 of 340, 34 %, 56 min left\n";
  const struct {
    std::vector<StateAnswer> states;
    ExitCode exit;
    std::string out, error;  // code, empty: none
    int64_t seconds;
    int progress_result = NUV_OK;
  } kRows[] = {
      {{kIdle}, kDone, "idle\n", "", 0},
      {{kReceiving, kPrinting, kPrinting, kPrinting, kIdle},
       kDone,
       "receiving\n" + kLayer12 + "printing, layer 13 of 340, 35 %, 55 min left\nidle\n",
       "",
       4},
      {{kPrinting, kInError}, kPrinterFailed, kLayer12 + "error 17\n", "printer_error", 1},
      {{kPrinting, kLost}, kConnectionProblem, kLayer12, "no_answer", 1},
      // The print ends between two questions.
      {{kPrinting, kIdle}, kDone, "idle\n", "", 1, NUV_NOT_PRINTING},
  };
  for (const auto& row : kRows) {
    SetUp();
    SCOPED_TRACE(row.out);
    fake.states.answers = row.states;
    fake.progress.answers = {{12, 34, 56}, {12, 34, 56}, {13, 35, 55}};
    fake.progress_result = row.progress_result;
    const FakeLibrary script = fake;
    system.now = 0;
    const CommandRun text({"watch"}, system);
    EXPECT_EQ(text.exit, row.exit);
    EXPECT_EQ(text.out, row.out);
    EXPECT_EQ(system.now, row.seconds * 1000);
    fake = script;
    const CommandRun json({"watch", "--json"}, system);
    EXPECT_EQ(json.exit, row.exit);
    EXPECT_EQ(json.err, "");
    const Words lines = Split(json.out, '\n');
    EXPECT_EQ(lines.size(), Split(row.out, '\n').size() + (row.error.empty() ? 0 : 1));
    for (const std::string& line : lines) document = nlohmann::json::parse(line);
    EXPECT_EQ(ErrorCode(), row.error);
  }
}

TEST_F(WatchTest, OverwritesItsRowOnATerminalAtEachInterval) {
  system.terminal = true;
  system.output_width = 81;
  fake.states.answers = {kPrinting, kIdle};
  EXPECT_EQ(CommandRun({"watch", "--interval", "2500"}, system).out,
            "\r[#######---------------]  printing, layer 12 of 340, 34 %, 56 min left"
            "\ridle" +
                std::string(66, ' ') + "\n");
  EXPECT_EQ(system.now, 2500);
  const PrintProgress odd = {2147483647, 2147483647, 400, -5};
  for (int width = -1; width < 200; ++width) {
    EXPECT_LE(static_cast<int>(WatchRow({1, 0}, odd, width).size()), std::max(width, 0));
  }
}

}  // namespace
}  // namespace nuvctl
