#include "command_fixture.h"

namespace nuvctl {
namespace {

using SettingTest = CommandTest;

const struct {
  std::vector<std::string> show, set;
  const char *before, *after;  // JSON
  int command;                 // that sets
} kSettings[] = {
    {{"nickname"},
     {"nickname", "status"},  // the name of a subcommand is a nickname too
     R"({"nickname": "Lab one"})",
     R"({"nickname": "status"})",
     196},
    {{"laser-power"},
     {"laser-power", "0"},
     R"({"laser_power_percent": 80})",
     R"({"laser_power_percent": 0})",
     332},
    {{"z-compensation"},
     {"z-compensation", "-20"},
     R"({"z_compensation_um": 5})",
     R"({"z_compensation_um": -20})",
     332},
    {{"scaling"},
     {"scaling", "1", "1.01", "2", "2.02", "3", "10"},
     R"({"scaling": {"x1": 1.1, "x2": 1.0, "y1": 1.0, "y2": 1.0, "z1": 1.0, "z2": 0.998}})",
     R"({"scaling": {"x1": 1.0, "x2": 1.01, "y1": 2.0, "y2": 2.02, "z1": 3.0, "z2": 10.0}})",
     370},
};

TEST_F(SettingTest, ShowsAndSetsAndBelievesOnlyWhatIsReadBack) {
  for (const auto& row : kSettings) {
    SCOPED_TRACE(row.after);
    fake = FakeLibrary();
    EXPECT_EQ(Both(row.show).exit, kDone);
    EXPECT_EQ(document, nlohmann::json::parse(row.before));
    fake.forgetful = true;
    const CommandRun kept = Both(row.set);
    EXPECT_EQ(kept.exit, kPrinterFailed);
    EXPECT_EQ(ErrorCode(), "not_confirmed");
    EXPECT_EQ(kept.out, "");
    document.erase("error");
    EXPECT_EQ(document, nlohmann::json::parse(row.before));
    fake.forgetful = false;
    EXPECT_EQ(Both(row.set).exit, kDone);
    EXPECT_EQ(document, nlohmann::json::parse(row.after));
  }
}

TEST_F(SettingTest, ARefusedValueIsNotAMissingQuery) {
  for (const auto& row : kSettings) {
    fake = FakeLibrary();
    fake.results[row.command] = NUV_PRINTER_REFUSED;
    const CommandRun run = Both(row.set);
    EXPECT_EQ(run.exit, kPrinterFailed);
    EXPECT_EQ(ErrorCode(), "refused");
    EXPECT_NE(run.err.find("the printer refused (printer command"), std::string::npos) << run.err;
  }
}

TEST_F(SettingTest, ShowsForPeopleWithUnits) {
  EXPECT_EQ(Both({"z-compensation", "-20"}).out, "Z compensation:  -20 \xC2\xB5m\n");
  EXPECT_EQ(Both({"scaling"}).out,
            "X1:  1.1\nX2:  1.0\nY1:  1.0\nY2:  1.0\nZ1:  1.0\nZ2:  0.998\n");
}

TEST_F(SettingTest, MarksTheLastJobRead) {
  EXPECT_EQ(Both({"jobs", "--mark", "5"}).exit, kDone);
  EXPECT_EQ(document, nlohmann::json::parse(R"({"last_updated": 5})"));
  fake.forgetful = true;
  EXPECT_EQ(Both({"jobs", "--mark", "6"}).exit, kPrinterFailed);
  EXPECT_EQ(ErrorCode(), "not_confirmed");
}

TEST_F(SettingTest, RefusesWhatIsNoValueWithoutASearch) {
  const std::vector<std::string> kRows[] = {
      {"nickname", ""},
      {"nickname", "a\nb"},
      {"nickname", "Lab", "one"},
      {"laser-power", "much"},
      {"laser-power", "99999999999"},
      {"z-compensation", "-"},
      {"scaling", "1", "1", "1", "1", "1"},
      {"scaling", "1", "1", "1", "1", "1", "1", "1"},
      {"scaling", "1", "1", "1", "1", "1", "nan"},
      {"jobs", "--mark", "-1"},
      {"jobs", "--mark", "1", "--last", "2"},
      {"sensors", "--laser", "0"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(Both(row).exit, kUsage) << testing::PrintToString(row);
    EXPECT_TRUE(fake.calls.empty());
  }
}

}  // namespace
}  // namespace nuvctl
