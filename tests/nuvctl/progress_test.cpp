#include "progress.h"

#include <gtest/gtest.h>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

TEST(ProgressTextTest, ShowsOnlyWhatIsKnown) {
  const std::pair<ProgressFigures, const char*> kRows[] = {
      {{0, 0, 0}, "  0%  0 B of 0 B"},
      {{3000, 1000, 10000}, " 33%  1.0 kB of 3.0 kB  100 B/s  0:20 left"},
      {{1000, 1500, 2000}, "100%  1.5 kB of 1.0 kB  750 B/s"},
      {{2147483647, 2147483646, 4000000000}, " 99%  2.1 GB of 2.1 GB  536 B/s  0:00 left"},
  };
  for (const auto& [figures, expected] : kRows) EXPECT_EQ(ProgressText(figures), expected);
}

TEST(ProgressBarTest, FillsInProportionAndNeverLeavesTheLine) {
  const ProgressFigures figures = {3000, 1000, 10000};
  EXPECT_EQ(ProgressBar(figures, 75),
            "[######--------------]  33%  1.0 kB of 3.0 kB  100 B/s  0:20 left");
  for (int width = -1; width < 200; ++width) {
    EXPECT_LE(static_cast<int>(ProgressBar(figures, width).size()), std::max(width, 0));
  }
}

struct ViewTest : testing::Test {
  std::string Show(ProgressStyle style, int total, const std::vector<int>& sent) {
    std::ostringstream err;
    ProgressView view(style, err, system);
    view.Start();
    for (const int bytes : sent) view.Update(total, bytes);
    view.Finish();
    return err.str();
  }
  FakeSystem system;
};

TEST_F(ViewTest, WritesOneLineAtStartAtEveryTenPercentAndAtTheEnd) {
  EXPECT_EQ(Show(ProgressStyle::kLines, 200, {1, 2, 19, 20, 21, 200}),
            "  0%  1 B of 200 B\n 10%  20 B of 200 B\n100%  200 B of 200 B\n");
  EXPECT_EQ(Show(ProgressStyle::kLines, 200, {1, 25, 27}),  // cut off
            "  0%  1 B of 200 B\n 12%  25 B of 200 B\n 13%  27 B of 200 B\n");
  EXPECT_EQ(Show(ProgressStyle::kLines, 200, {}), "");
  EXPECT_EQ(Show(ProgressStyle::kSilent, 200, {1, 200}), "");
}

TEST_F(ViewTest, OverwritesItsLineOnATerminalWithoutLeftovers) {
  system.width = 25;
  std::ostringstream err;
  ProgressView view(ProgressStyle::kBar, err, system);
  view.Update(1000, 999);
  view.Update(10, 9);
  view.Finish();
  EXPECT_EQ(err.str(), "\r 99%  999 B of 1.0 kB\r 90%  9 B of 10 B    \n");
}

using WatchTest = CommandTest;

TEST_F(WatchTest, WritesALinePerChangeUntilThePrintEnds) {
  const std::string kLayer12 = "printing, layer 12 of 340, 34 %, 56 min left\n";
  const struct {
    std::vector<StateAnswer> states;
    ExitCode exit;
    std::string out, error;  // code, empty: none
    int64_t seconds;
    int progressResult = NUV_OK;
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
    g_fake.states.answers = row.states;
    g_fake.progress.answers = {{12, 34, 56}, {12, 34, 56}, {13, 35, 55}};
    g_fake.progressResult = row.progressResult;
    const FakeLibrary script = g_fake;
    system.now = 0;
    const CommandRun text({"watch"}, system);
    EXPECT_EQ(text.exit, row.exit);
    EXPECT_EQ(text.out, row.out);
    EXPECT_EQ(system.now, row.seconds * 1000);
    g_fake = script;
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
  system.outputWidth = 81;
  g_fake.states.answers = {kPrinting, kIdle};
  EXPECT_EQ(CommandRun({"watch", "--interval", "2500"}, system).out,
            "\r[#######---------------]  printing, layer 12 of 340, 34 %, 56 min left"
            "\ridle" +
                std::string(66, ' ') + "\n");
  EXPECT_EQ(system.now, 2500);
  const PrintProgress odd = {2147483647, 2147483647, 400, -5};
  for (int width = -1; width < 200; ++width) {
    EXPECT_LE(static_cast<int>(WatchBar({1, 0}, odd, width).size()), std::max(width, 0));
  }
}

}  // namespace
}  // namespace NuvCtl
