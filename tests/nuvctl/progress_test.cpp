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

TEST(LiveRowsTest, AreWrittenOverWhateverBecomesOfTheWindow) {
  std::ostringstream terminal;
  LiveRows rows(terminal);
  rows.Draw({"one row of twenty...", "b"}, 80);
  rows.Draw({"a", "b"}, 10);  // in which the first row takes two lines
  rows.Finish();
  EXPECT_EQ(terminal.str(),
            "\rone row of twenty...\x1b[K\nb\x1b[K\x1b[J"
            "\r\x1b[2Aa\x1b[K\nb\x1b[K\x1b[J\n");
}

}  // namespace
}  // namespace NuvCtl
