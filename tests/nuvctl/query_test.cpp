#include "command_fixture.h"

namespace NuvCtl {
namespace {

using QueryTest = CommandTest;

constexpr int kLacks = NUV_PRINTER_REFUSED;

TEST_F(QueryTest, EachShowsWhatThePrinterTells) {
  const struct {
    const char *arguments, *model;
    int lacks, lacksToo;      // commands, 0: none
    const char *line, *json;  // one line of the text, the whole document
  } kRows[] = {
      {"resin", "Moldrix100 xP", 0, 0, "Left:                       350 ml\n",
       R"({"model": "Moldrix100 xP", "state": 5, "remaining_ml": 350, "code": "1001", "lot": "L1",
           "tank_volume_ml": 500, "open_mode": true, "tag_registered": true})"},
      {"resin", "Zafel 1.0", 335, 219, "Use by:          2027-01-31\n",
       R"({"model": "Zafel 1.0", "state": 6, "remaining_ml": 250, "type": "1002",
           "use_by": "20270131", "tag_registered": null})"},
      {"resin", "Zafel 1.0A", 335, 0, "Tag registered:  yes\n",
       R"({"model": "Zafel 1.0A", "state": 6, "remaining_ml": 250, "type": "1002",
           "use_by": "20270131", "tag_registered": true})"},
      {"resin", "BEGO VARSEO XS", 219, 0, "Tag registered:             no\n",
       R"({"model": "BEGO VARSEO XS", "name": "Resin A", "remaining_ml": 150, "lot": "L2",
           "use_by": "20280131", "open_mode": true, "tag_registered": false})"},
      {"versions", "M", 0, 0, "Android board:  2.1.0\n",
       R"({"firmware": "1.2", "controller": "C7", "android": "2.1.0", "lcm_panel": "3.0.2"})"},
      {"versions", "M", 310, 504, "Firmware:    1.2\n",
       R"({"firmware": "1.2", "controller": "C7"})"},
      {"sensors --laser 3 --flash", "M", 0, 0,
       "Chamber top:              28 \xC2\xB0"
       "C\n",
       R"({"sensors": {"chamber_top_c": 28, "chamber_bottom_c": 27, "z_limit_top": false,
             "z_limit_bottom": true, "tank_type": 2, "resin_level_percent": 80,
             "wiper_home": false, "y_home": true, "lid_closed": false, "cartridge": true,
             "platform": false, "y_end": true, "tank_c": 30}, "moving_to_reference": true,
           "laser": {"number": 3, "photodiode": {"minimum": 3, "maximum": 980, "average": 512},
             "pulse_widths": [11, 12, 13, 14, 15]},
           "flash": {"scan_centre": 1, "line_length": 2, "polygon_speed": 3, "start": 4,
             "trigger_delay": 5, "line_width": 6, "y_offset": 7}})"},
      // The flash is there without sensors too.
      {"sensors --flash", "Fabrix150 xP", 301, 515, "Z offset 2:",
       R"({"flash": {"scan_centre_1": 1, "scan_centre_2": 2, "scan_centre_3": 3,
             "line_length_1": 4, "line_length_2": 5, "line_length_3": 6, "trigger_delay_1": 7,
             "trigger_delay_2": 8, "trigger_delay_3": 9, "z_offset_1": 10, "z_offset_2": 11}})"},
      {"jobs --last 1", "M", 0, 0,
       "6      Job6  finished  2026-11-21 10:30:00  2026-11-21 11:15:00  45   300",
       R"({"current": {"index": 6, "bytes": 10}, "last_updated": 3,
           "counters": {"started": 120, "finished": 9, "cancelled": 1, "failed": 2},
           "jobs": [{"index": 6, "name": "Job6", "result": "finished", "result_number": 0,
             "started": "20261121T103000", "ended": "20261121T111500", "layers": 300,
             "minutes": 45, "resin_code": "1001", "lot": "L1", "resin_ml": 12, "layer_um": 50,
             "exposure_ms": 1500, "bottom_exposure_ms": 9000, "laser_power_percent": 81}]})"},
      {"tank", "M", 0, 0, "Tank:  2\n", R"({"tank_type": 2})"},
      {"leds", "M", 0, 0, "Light source on:  1234 h\n", R"({"led_hours": 1234})"},
      {"skip-warmup", "M", 0, 0, "The printer skips its warm-up.\n", R"({"warmup": "skipped"})"},
      {"wifi status", "M", 0, 0, "Joined to an access point:  no\n",
       R"({"connected": false, "mac_wifi": "02:00:00:00:00:01", "mac_lan": "02:00:00:00:00:02"})"},
  };
  for (const auto& row : kRows) {
    SetUp();
    g_fake.devices[0][NUV_DEVICE_MODEL] = row.model;
    g_fake.results = {{row.lacks, kLacks}, {row.lacksToo, kLacks}};
    const CommandRun run = Ends(Split(row.arguments), kDone);
    EXPECT_NE(run.out.find(row.line), std::string::npos) << run.out;
    EXPECT_EQ(document, nlohmann::json::parse(row.json));
  }
}

TEST_F(QueryTest, WhatThePrinterLacksIsSaidSoOrLeftOut) {
  // The printer's command, and what asks it.
  const std::string needed =
      "105 resin;301 sensors;186 sensors --laser 1;303 sensors --laser 1;327 sensors --flash;"
      "169 jobs;301 tank;708 leds;197 nickname;159 laser-power;159 laser-power 80;"
      "159 z-compensation;369 scaling;198 wifi list;190 wifi status";
  const std::string leftOut =
      "219 resin;335 resin;515 sensors;310 versions;504 versions;170 jobs;174 jobs;177 jobs;"
      "192 wifi status";
  for (const bool refused : {true, false}) {
    for (const std::string& row : Split(refused ? needed : leftOut, ';')) {
      Words arguments = Split(row);
      const std::string command = arguments.front();
      arguments.erase(arguments.begin());
      SetUp();
      g_fake.results[std::stoi(command)] = kLacks;
      const CommandRun run =
          Ends(arguments, refused ? kPrinterFailed : kDone, refused ? "refused" : "");
      const std::string told = "this printer does not have it (printer command " + command + ")";
      EXPECT_EQ(run.err.find(told) != std::string::npos, refused) << run.err;
      // No answer is another matter.
      g_fake.results[std::stoi(command)] = NUV_FAILED;
      Ends(arguments, kConnectionProblem, "no_answer");
    }
  }
}

TEST_F(QueryTest, AResinThatCannotBeUsedIsAnAnswer) {
  const std::pair<int, const char*> kRows[] = {
      {NUV_RESIN_EMPTY, "resin_empty"},
      {NUV_RESIN_EXPIRED, "resin_expired"},
      {NUV_RESIN_NO_CARTRIDGE, "resin_missing"},
      {NUV_RESIN_TAG_UNREADABLE, "resin_tag_unreadable"},
      {NUV_RESIN_WRONG_TYPE, "resin_wrong_type"},
  };
  for (const auto& [result, code] : kRows) {
    g_fake.results = {{105, result}, {219, kLacks}};
    const CommandRun run = Ends({"resin"}, kPrinterFailed, code);
    const std::string told = "cannot print with this resin: " + ReasonOf(result) + ".\n";
    EXPECT_NE(run.err.find(told), std::string::npos) << run.err;
    EXPECT_NE(run.out.find("Takes resin without a tag:  yes\n"), std::string::npos);
    EXPECT_EQ(document["tag_registered"], false);
    EXPECT_FALSE(document.contains("remaining_ml"));
  }
}

TEST_F(QueryTest, ListsTheNewestJobsDownToTheOldestKnown) {
  const struct {
    int newest, oldest;
    const char* arguments;
    std::vector<int> listed;
  } kRows[] = {
      {30, 1, "jobs", {30, 29, 28, 27, 26, 25, 24, 23, 22, 21}},
      {3, 1, "jobs", {3, 2, 1}},
      {30, 1, "jobs --last 2", {30, 29}},
      {30, 29, "jobs", {30, 29}},
      {30, 31, "jobs", {}},
      {0, 1, "jobs", {}},
  };
  for (const auto& row : kRows) {
    SetUp();
    g_fake.marks.answers = {{0, row.newest, 1000}};
    g_fake.oldestJob = row.oldest;
    Ends(Split(row.arguments), kDone);
    std::vector<int> listed;
    for (const auto& job : document["jobs"]) listed.push_back(job["index"]);
    EXPECT_EQ(listed, row.listed);
  }
}

TEST_F(QueryTest, TellsHowAJobEnded) {
  const std::pair<int, const char*> kRows[] = {
      {1, "cancelled"}, {2, "failed"}, {3, "not ended"}, {4, "unknown (4)"}};
  for (const auto& [result, name] : kRows) {
    g_fake.jobResult = result;
    Ends({"jobs"}, kDone);
    EXPECT_EQ(document["jobs"][0]["result"], name);
    EXPECT_EQ(document["jobs"][0].contains("ended"), result != 3);
  }
  g_fake.results[169] = kLacks;  // without a history the current job is told all the same
  EXPECT_NE(Both({"jobs"}).out.find("Current or last job:  "), std::string::npos);
}

}  // namespace
}  // namespace NuvCtl
