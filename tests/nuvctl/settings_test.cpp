#include "command_fixture.h"

namespace NuvCtl {
namespace {

using SettingsTest = CommandTest;

TEST_F(SettingsTest, ShowsAndSetsAndBelievesOnlyWhatIsReadBack) {
  One("Fabrix150 xP");
  Json("laser-power 75");
  const struct {
    const char *show, *set, *told, *after;
    const char *command, *query;  // that set and show it
    int asked = 1;                // so often before it is set
  } rows[] = {
      {"nickname", "nickname status", "Nickname:  status (was Lab one)\n",
       R"({"nickname": "status", "was": {"nickname": "Lab one"}})", "196", "F197", 2},
      {"laser-power", "laser-power 0", "Laser power:  0 % (was 75 %)\n",
       R"({"laser_power_percent": 0, "was": {"laser_power_percent": 75}})", "332", "F159 S0"},
      {"z-compensation", "z-compensation -20", "Z compensation:  -20 \xC2\xB5m (was 0 \xC2\xB5m)\n",
       R"({"z_compensation_um": -20, "was": {"z_compensation_um": 0}})", "332", "F159 S1"},
      {"scaling", "scaling 1 1.01 1 1.02 1 0.998", "Z2:  0.998\nIt was:\nX1:  1.0\n",
       R"({"scaling": {"x1": 1.0, "x2": 1.01, "y1": 1.0, "y2": 1.02, "z1": 1.0, "z2": 0.998},
           "was": {"scaling": {"x1": 1.0, "x2": 1.0, "y1": 1.0, "y2": 1.0, "z1": 1.0,
                               "z2": 1.0}}})",
       "370", "F369"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.set);
    Ends(row.show, kDone);
    const nlohmann::json before = document;
    // Accepted, but not kept.
    Json(Words{"raw", row.query});
    NuvSim::Fault fault =
        NuvSim::ParseFault("answer,text=x,code=" + std::string(row.query).substr(1, 3));
    fault.text = document["reply"];
    fault.skip = row.asked;
    simulator->InjectFault(0, fault);
    Ends(row.set, kPrinterFailed, "not_confirmed");
    document.erase("error");
    EXPECT_EQ(document, before);
    // What was, once more for what is told of a change.
    fault.skip = 0;
    fault.count = row.asked;
    simulator->InjectFault(0, fault);
    Run(row.set);
    EXPECT_THAT(out, HasSubstr(row.told));
    Ends(row.show, kDone);
    nlohmann::json after = nlohmann::json::parse(row.after);
    after.erase("was");
    EXPECT_EQ(document, after);
    Commits(std::string("refuse,code=") + row.command + ",count=-1");
    Run(row.set);
    EXPECT_THAT(err, HasSubstr("the printer refused (printer command"));
    simulator->ClearFaults(0);
  }
  EXPECT_EQ(Run("nickname --clear"), kDone);
  EXPECT_EQ(Run(Words{"nickname", "two  blanks"}), kDone) << err;
  EXPECT_THAT(out, HasSubstr("two blanks"));
}

TEST_F(SettingsTest, AsksAboutFactorsThatAreRarelyMeant) {
  One();
  system.terminal = true;
  system.answer = "n";
  EXPECT_EQ(Run("scaling 1 1 1 1.2 1 1"), kCancelled);
  EXPECT_THAT(system.prompt, HasSubstr("Y2 is off by more than a tenth"));
  EXPECT_EQ(simulator->Totals().connections, 0U);
  EXPECT_EQ(Run("scaling 1 1 1 1.2 1 1 --yes"), kDone);
}

TEST_F(SettingsTest, MarksTheLastJobRead) {
  One();
  Ends("jobs --mark 1", kPrinterFailed, "refused");
  EXPECT_EQ(Run(Words{"send", PrintFile()}), kDone);
  Ends("jobs --mark 1", kDone);
  EXPECT_EQ(document["last_updated"], 1);
}

}  // namespace
}  // namespace NuvCtl
