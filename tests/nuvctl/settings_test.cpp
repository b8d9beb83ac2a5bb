#include "command_fixture.h"

namespace NuvCtl {
namespace {

using SettingsTest = CommandTest;

TEST_F(SettingsTest, ShowsAndSetsAndBelievesOnlyWhatIsReadBack) {
  const struct {
    const char *show, *set, *before, *after;
    int command;  // that sets
  } kRows[] = {
      // The name of a subcommand is a nickname too.
      {"nickname", "nickname status", R"({"nickname": "Lab one"})", R"({"nickname": "status"})",
       196},
      {"laser-power", "laser-power 0", R"({"laser_power_percent": 80})",
       R"({"laser_power_percent": 0})", 332},
      {"z-compensation", "z-compensation -20", R"({"z_compensation_um": 5})",
       R"({"z_compensation_um": -20})", 332},
      {"scaling", "scaling 1 1.01 2 2.02 3 10",
       R"({"scaling": {"x1": 1.1, "x2": 1.0, "y1": 1.0, "y2": 1.0, "z1": 1.0, "z2": 0.998}})",
       R"({"scaling": {"x1": 1.0, "x2": 1.01, "y1": 2.0, "y2": 2.02, "z1": 3.0, "z2": 10.0}})",
       370},
      {"jobs --mark 3", "jobs --mark 5", R"({"last_updated": 3})", R"({"last_updated": 5})", 171},
  };
  for (const auto& row : kRows) {
    const nlohmann::json before = nlohmann::json::parse(row.before);
    SetUp();
    Ends(Split(row.show), kDone);
    EXPECT_EQ(document, before);
    g_fake.forgetful = true;
    EXPECT_EQ(Ends(Split(row.set), kPrinterFailed, "not_confirmed").out, "");
    document.erase("error");
    EXPECT_EQ(document, before);
    g_fake.forgetful = false;
    Ends(Split(row.set), kDone);
    EXPECT_EQ(document, nlohmann::json::parse(row.after));
    // A refused value is not a missing query.
    g_fake.results[row.command] = NUV_PRINTER_REFUSED;
    const CommandRun run = Ends(Split(row.set), kPrinterFailed, "refused");
    EXPECT_NE(run.err.find("the printer refused (printer command"), std::string::npos) << run.err;
  }
  SetUp();
  EXPECT_EQ(Both({"z-compensation", "-20"}).out, "Z compensation:  -20 \xC2\xB5m\n");
  EXPECT_EQ(Both({"scaling"}).out,
            "X1:  1.1\nX2:  1.0\nY1:  1.0\nY2:  1.0\nZ1:  1.0\nZ2:  0.998\n");
}

}  // namespace
}  // namespace NuvCtl
