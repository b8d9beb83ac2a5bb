#include "command_fixture.h"

namespace nuvctl {
namespace {

using Results = std::map<int, int>;
using QueryTest = CommandTest;

constexpr int kLacks = NUV_PRINTER_REFUSED;

TEST_F(QueryTest, EachShowsWhatThePrinterTells) {
  const struct {
    std::vector<std::string> arguments;
    const char* model;
    Results results;
    const char* line;  // one of the text's
    const char* json;
  } kRows[] = {
      {{"resin"},
       "Moldrix100 xP",
       {},
       "Left:                       350 ml\n",
       R"({"model": "Moldrix100 xP", "state": 5, "remaining_ml": 350, "code": "1001", "lot": "L1",
           "tank_volume_ml": 500, "open_mode": true, "tag_registered": true})"},
      {{"resin"},
       "Zafel 1.0",
       {{335, kLacks}, {219, kLacks}},
       "Use by:          2027-01-31\n",
       R"({"model": "Zafel 1.0", "state": 6, "remaining_ml": 250, "type": "1002",
           "use_by": "20270131", "tag_registered": null})"},
      {{"resin"},
       "Zafel 1.0A",
       {{335, kLacks}},
       "Tag registered:  yes\n",
       R"({"model": "Zafel 1.0A", "state": 6, "remaining_ml": 250, "type": "1002",
           "use_by": "20270131", "tag_registered": true})"},
      {{"resin"},
       "BEGO VARSEO XS",
       {{219, kLacks}},
       "Tag registered:             no\n",
       R"({"model": "BEGO VARSEO XS", "name": "Resin A", "remaining_ml": 150, "lot": "L2",
           "use_by": "20280131", "open_mode": true, "tag_registered": false})"},
      {{"versions"},
       "M",
       {},
       "Android board:  2.1.0\n",
       R"({"firmware": "1.2", "controller": "C7", "android": "2.1.0", "lcm_panel": "3.0.2"})"},
      {{"versions"},
       "M",
       {{310, kLacks}, {504, kLacks}},
       "Firmware:    1.2\n",
       R"({"firmware": "1.2", "controller": "C7"})"},
      {{"tank"}, "M", {}, "Tank:  2\n", R"({"tank_type": 2})"},
      {{"leds"}, "M", {}, "Light source on:  1234 h\n", R"({"led_hours": 1234})"},
      {{"skip-warmup"}, "M", {}, "The printer skips its warm-up.\n", R"({"warmup": "skipped"})"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    fake = FakeLibrary();
    fake.devices[0][NUV_DEVICE_MODEL] = row.model;
    fake.results = row.results;
    const CommandRun run = Both(row.arguments);
    EXPECT_EQ(run.exit, kDone) << run.err;
    EXPECT_NE(run.out.find(row.line), std::string::npos) << run.out;
    EXPECT_EQ(document, nlohmann::json::parse(row.json));
  }
}

TEST_F(QueryTest, WhatThePrinterLacksIsSaidSo) {
  const struct {
    std::vector<std::string> arguments;
    int command;
  } kRows[] = {
      {{"resin"}, 105},
      {{"sensors"}, 301},
      {{"sensors", "--laser", "1"}, 186},
      {{"sensors", "--laser", "1"}, 303},
      {{"sensors", "--flash"}, 327},
      {{"jobs"}, 169},
      {{"tank"}, 301},
      {{"leds"}, 708},
      {{"nickname"}, 197},
      {{"laser-power"}, 159},
      {{"laser-power", "80"}, 159},
      {{"z-compensation"}, 159},
      {{"scaling"}, 369},
      {{"wifi", "list"}, 198},
      {{"wifi", "status"}, 190},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    fake = FakeLibrary();
    fake.results[row.command] = kLacks;
    const CommandRun run = Both(row.arguments);
    EXPECT_EQ(run.exit, kPrinterFailed);
    EXPECT_EQ(ErrorCode(), "refused");
    EXPECT_NE(run.err.find("this printer does not have it (printer command " +
                           std::to_string(row.command) + ")"),
              std::string::npos)
        << run.err;
    // No answer is another matter, also where a refusal would be put up with.
    fake.results[row.command] = NUV_FAILED;
    EXPECT_EQ(Both(row.arguments).exit, kConnectionProblem);
  }
}

TEST_F(QueryTest, OnlyARefusalLeavesAnAnswerOut) {
  const struct {
    const char* subcommand;
    int command;
  } kRows[] = {{"resin", 219},    {"resin", 335}, {"sensors", 515}, {"versions", 310},
               {"versions", 504}, {"jobs", 170},  {"jobs", 174},    {"jobs", 177}};
  for (const auto& row : kRows) {
    fake = FakeLibrary();
    fake.results[row.command] = kLacks;
    EXPECT_EQ(Both({row.subcommand}).exit, kDone) << row.command;
    fake.results[row.command] = NUV_FAILED;
    EXPECT_EQ(Both({row.subcommand}).exit, kConnectionProblem) << row.command;
  }
}

TEST_F(QueryTest, AResinThatCannotBeUsedIsAnAnswer) {
  const struct {
    int result;
    const char *code, *reason;
  } kRows[] = {
      {NUV_RESIN_EMPTY, "resin_empty", "too little resin is left"},
      {NUV_RESIN_EXPIRED, "resin_expired", "the resin is past its date of use"},
      {NUV_RESIN_NO_CARTRIDGE, "resin_missing", "no resin cartridge or tank is in place"},
      {NUV_RESIN_TAG_UNREADABLE, "resin_tag_unreadable", "the tag of the resin cannot be read"},
      {NUV_RESIN_WRONG_TYPE, "resin_wrong_type", "the resin is not made for this printer"},
  };
  for (const auto& row : kRows) {
    fake.results = {{105, row.result}, {219, kLacks}};
    const CommandRun run = Both({"resin"});
    EXPECT_EQ(run.exit, kPrinterFailed);
    EXPECT_EQ(ErrorCode(), row.code);
    EXPECT_NE(run.err.find(std::string("cannot print with this resin: ") + row.reason + ".\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.out.find("Takes resin without a tag:  yes\n"), std::string::npos);
    EXPECT_EQ(document["tag_registered"], false);
    EXPECT_FALSE(document.contains("remaining_ml"));
  }
}

TEST_F(QueryTest, SensorsKeepTheirNamesAndUnits) {
  const CommandRun run = Both({"sensors", "--laser", "3", "--flash"});
  for (const char* line : {"Chamber top:              28 \xC2\xB0"
                           "C\n",
                           "Resin level:              80 %\n", "Lid closed:               no\n",
                           "Pulse widths:             11 12 13 14 15\n"}) {
    EXPECT_NE(run.out.find(line), std::string::npos) << run.out;
  }
  EXPECT_EQ(document, nlohmann::json::parse(
                          R"({"sensors": {"chamber_top_c": 28, "chamber_bottom_c": 27,
              "z_limit_top": false, "z_limit_bottom": true, "tank_type": 2,
              "resin_level_percent": 80, "wiper_home": false, "y_home": true, "lid_closed": false,
              "cartridge": true, "platform": false, "y_end": true, "tank_c": 30},
            "moving_to_reference": true,
            "laser": {"number": 3, "photodiode": {"minimum": 3, "maximum": 980, "average": 512},
              "pulse_widths": [11, 12, 13, 14, 15]},
            "flash": {"scan_centre": 1, "line_length": 2, "polygon_speed": 3, "start": 4,
              "trigger_delay": 5, "line_width": 6, "y_offset": 7}})"));
  fake.devices[0][NUV_DEVICE_MODEL] = "Fabrix150 xP";
  fake.results = {{301, kLacks}, {515, kLacks}};  // the flash is there all the same
  EXPECT_EQ(Both({"sensors", "--flash"}).exit, kDone);
  EXPECT_EQ(document, nlohmann::json::parse(
                          R"({"flash": {"scan_centre_1": 1, "scan_centre_2": 2, "scan_centre_3": 3,
              "line_length_1": 4, "line_length_2": 5, "line_length_3": 6, "trigger_delay_1": 7,
              "trigger_delay_2": 8, "trigger_delay_3": 9, "z_offset_1": 10, "z_offset_2": 11}})"));
}

TEST_F(QueryTest, ListsTheNewestJobsDownToTheOldestKnown) {
  const struct {
    int newest, oldest;
    std::vector<std::string> options;
    std::vector<int> listed;
  } kRows[] = {
      {7, 1, {}, {7, 6, 5, 4, 3, 2, 1}},
      {30, 1, {}, {30, 29, 28, 27, 26, 25, 24, 23, 22, 21}},
      {30, 1, {"--last", "2"}, {30, 29}},
      {30, 29, {}, {30, 29}},
      {30, 31, {}, {}},
      {30, 1, {"--last", "0"}, {}},
      {0, 1, {}, {}},
  };
  for (const auto& row : kRows) {
    fake = FakeLibrary();
    fake.marks.answers = {{0, row.newest, 1000}};
    fake.oldest_job = row.oldest;
    std::vector<std::string> arguments = {"jobs"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    EXPECT_EQ(Both(arguments).exit, kDone);
    std::vector<int> listed;
    for (const auto& job : document["jobs"]) listed.push_back(job["index"]);
    EXPECT_EQ(listed, row.listed);
  }
}

TEST_F(QueryTest, TellsAllOfAJob) {
  fake.marks.answers = {{0, 1, 6750}};
  const CommandRun run = Both({"jobs"});
  EXPECT_NE(
      run.out.find("1      Job1  finished  2026-11-21 10:30:00  2026-11-21 11:15:00  45   300"),
      std::string::npos)
      << run.out;
  EXPECT_EQ(document, nlohmann::json::parse(
                          R"({"current": {"index": 1, "bytes": 6750},
            "counters": {"started": 12, "finished": 9, "cancelled": 1, "failed": 2},
            "last_updated": 3,
            "jobs": [{"index": 1, "name": "Job1", "result": "finished", "result_number": 0,
              "started": "20261121T103000", "ended": "20261121T111500", "layers": 300,
              "minutes": 45, "resin_code": "1001", "lot": "L1", "resin_ml": 12, "layer_um": 50,
              "exposure_ms": 1500, "bottom_exposure_ms": 9000, "laser_power_percent": 81}]})"));
  fake.job_result = 3;
  Both({"jobs"});
  EXPECT_EQ(document["jobs"][0]["result"], "not ended");
  EXPECT_FALSE(document["jobs"][0].contains("ended"));
  fake.job_result = 4;
  Both({"jobs"});
  EXPECT_EQ(document["jobs"][0]["result"], "unknown (4)");
}

TEST_F(QueryTest, WithoutAHistoryTheCurrentJobIsToldAllTheSame) {
  fake.marks.answers = {{0, 4, 100}};
  fake.results[169] = kLacks;
  EXPECT_NE(Both({"jobs"}).out.find("Current or last job:  4\n"), std::string::npos);
  EXPECT_EQ(document["current"]["index"], 4);
}

}  // namespace
}  // namespace nuvctl
