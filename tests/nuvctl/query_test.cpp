#include "command_fixture.h"

namespace NuvCtl {
namespace {

using QueryTest = CommandTest;

TEST_F(QueryTest, EachShowsWhatThePrinterTells) {
  const struct {
    const char *arguments, *model, *lines, *json;  // some lines of the text, the whole document
  } rows[] = {
      {"status", "Zafel Superfine", "State:  idle\n", R"({"state": "idle", "state_number": 0})"},
      {"resin", "Moldrix100 xP",
       "State:                      ready\nLeft:                       350 ml\n",
       R"({"state": "ready", "remaining_ml": 350, "resin": "1001", "code": "1001", "lot": "L0001",
           "tank_volume_ml": 500, "open_mode": true, "tag_registered": true})"},
      {"resin", "Zafel 1.0", "Use by:          2027-01-31\nTag registered:  not known\n",
       R"({"state": "ready", "remaining_ml": 350, "resin": "1001", "type": "1001",
           "use_by": "20270131", "tag_registered": null})"},
      {"resin", "BEGO VARSEO XS", "Resin name:      Resin A\n",
       R"({"remaining_ml": 350, "resin": "Resin A", "name": "Resin A", "lot": "L0001",
           "use_by": "20270131", "tag_registered": null})"},
      {"versions", "Fabrix150 xP", "Android board:   2.1.0\n",
       R"({"firmware": "1.0.0", "controller": "1.0", "android": "2.1.0", "android_loader": "1.4",
           "lcm_panel": "3.0.2"})"},
      {"versions", "Zafel Superfine", "Controller:  1.0\n",
       R"({"firmware": "1.0.0", "controller": "1.0"})"},
      {"sensors --laser 3 --flash", "Fabrix150 xP", "Z offset 2:               11\n",
       R"({"sensors": {"chamber_top_c": 28, "chamber_bottom_c": 27, "tank_c": 30,
             "resin_level_percent": 80, "tank_type": 2, "z_limit_top": false,
             "z_limit_bottom": true, "wiper_home": true, "y_home": true, "y_end": false,
             "lid_closed": true, "cartridge": true, "platform": true},
           "moving_to_reference": false,
           "laser": {"number": 3, "photodiode": {"minimum": 13, "maximum": 903, "average": 503},
             "pulse_widths": [103, 203, 303, 403, 503]},
           "flash": {"scan_centre_1": 1, "scan_centre_2": 2, "scan_centre_3": 3,
             "line_length_1": 4, "line_length_2": 5, "line_length_3": 6, "trigger_delay_1": 7,
             "trigger_delay_2": 8, "trigger_delay_3": 9, "z_offset_1": 10, "z_offset_2": 11}})"},
      {"tank", "Fabrix150 xP", "Tank:  2\n", R"({"tank_type": 2})"},
      {"jobs", "Zafel Superfine", "Jobs failed:              0\n",
       R"({"current": {"index": 0, "bytes": 0}, "counters": {"started": 0, "finished": 0,
           "cancelled": 0, "failed": 0}, "last_updated": 0, "jobs": []})"},
      {"info", "BEGO VARSEO XS", "Nickname:       Lab one\nManufactured:   20240131\n",
       R"({"address": "127.0.0.1", "name": "printer-SN1", "model": "BEGO VARSEO XS",
           "serial": "SN1", "firmware": "1.0.0", "controller": "1.0", "nickname": "Lab one",
           "manufactured": "20240131"})"},
  };
  for (const auto& row : rows) {
    One(row.model);
    EXPECT_EQ(Run(row.arguments), kDone) << err;
    EXPECT_THAT(out, HasSubstr(row.lines));
    Json(row.arguments);
    EXPECT_EQ(document, nlohmann::json::parse(row.json)) << row.arguments << out;
    simulator.reset();
  }
}

TEST_F(QueryTest, TellsWhatAPrinterDoes) {
  One();
  const struct {
    std::vector<std::string> answers;
    const char *text, *json;
  } rows[] = {
      {{"F102 OK S:3 E:17"},
       "State:         error\nError number:  17\n",
       R"({"state": "error", "state_number": 3, "error_number": 17})"},
      {{"F102 OK S:7"},
       "State:  unknown (7)\n",
       R"J({"state": "unknown (7)", "state_number": 7})J"},
      {{"F102 OK S:1 L:12 C:34 T:0 R:crown", "F107 OK L:340 T:99 R:crown"},
       "State:      printing\nJob:        crown\nLayer:      12 of 340\nProgress:   34 %\nTime "
       "left:  not known\n",
       R"({"state": "printing", "state_number": 1, "job_name": "crown", "layer": 12, "layers": 340,
           "percent": 34, "minutes_left": null})"},
  };
  for (const auto& row : rows) {
    for (int run = 0; run < 2; ++run) {
      simulator->ClearFaults(0);
      for (const std::string& answer : row.answers) {
        NuvSim::Fault fault = NuvSim::ParseFault("answer,code=" + answer.substr(1, 3) + ",text=x");
        fault.text = answer;
        simulator->InjectFault(0, fault);
      }
      EXPECT_EQ(run == 0 ? Run("status") : Json("status"), kDone);
      if (run == 0) {
        EXPECT_EQ(out, row.text);
      }
    }
    EXPECT_EQ(document, nlohmann::json::parse(row.json));
  }
  simulator->ClearFaults(0);
  NuvSim::Fault fault = NuvSim::ParseFault("answer,code=102,text=x,count=2");
  fault.text = "F102 OK S:1 L:1 C:2 T:60 R:crown";
  simulator->InjectFault(0, fault);
  Run("status");
  EXPECT_THAT(out, HasSubstr("Time left:  60 min\nEnds:       "));
  Json("status");
  EXPECT_TRUE(document.contains("ends_at"));
}

TEST_F(QueryTest, WhatThePrinterLacksIsSaidSoOrLeftOut) {
  One();
  for (const char* row :
       {"301 sensors", "301 tank", "327 sensors --flash", "169 jobs", "708 leds", "159 laser-power",
        "159 z-compensation", "369 scaling", "198 wifi list", "190 wifi status", "197 nickname"}) {
    Words arguments = Split(row);
    const std::string code = arguments.front();
    arguments.erase(arguments.begin());
    simulator->ClearFaults(0);
    for (const std::string& each : {code, std::string("515")}) {
      Commits("refuse,code=" + each + ",count=-1");
    }
    Run(arguments);
    EXPECT_EQ(exit, kPrinterFailed) << row << err;
    EXPECT_THAT(err, HasSubstr("this printer does not have")) << row;
  }
  One("Fabrix150 xP");
  for (const char* row : {"219 resin", "335 resin", "515 sensors", "310 versions", "504 versions",
                          "170 jobs", "192 wifi status", "197 info"}) {
    const std::string line = row;
    simulator->ClearFaults(0);
    Commits("refuse,code=" + line.substr(0, 3) + ",count=-1");
    Ends(line.substr(4), kDone);
  }
}

TEST_F(QueryTest, AResinThatCannotBeUsedIsAnAnswer) {
  One("Moldrix100 xP");
  const char* const kWords[] = {"absent", "tag unreadable", "expired", "wrong resin", "too little"};
  for (int state = 0; state < 5; ++state) {
    simulator->SetResinRefusal(0, state);
    EXPECT_EQ(Run("resin"), kPrinterFailed);
    EXPECT_THAT(err, HasSubstr(std::string("with this resin: ") + kWords[state]));
    EXPECT_THAT(out, HasSubstr("Takes resin without a tag:  yes\n"));
    Ends("resin", kPrinterFailed, "resin_refused");
    EXPECT_EQ(document["state"], kWords[state]);
  }
}

TEST_F(QueryTest, ListsTheNewestJobsDownToTheOldestKnown) {
  One();
  const std::string file = PrintFile();
  for (int job = 1; job <= 3; ++job) {
    EXPECT_EQ(Run(Words{"send", file}), kDone) << err;
    EXPECT_TRUE(Becomes([&] { return simulator->Status().state == NuvSim::State::kIdle; }));
  }
  const auto listed = [&](const std::string& line) {
    std::vector<int> indexes;
    Ends(line, kDone);
    for (const auto& job : document["jobs"]) indexes.push_back(job["index"]);
    return indexes;
  };
  EXPECT_EQ(listed("jobs"), (std::vector<int>{3, 2, 1}));
  EXPECT_EQ(document["jobs"][0]["result"], "finished");
  EXPECT_EQ(listed("jobs --last 2"), (std::vector<int>{3, 2}));
  Commits("refuse,code=174,skip=1,count=-1");
  EXPECT_EQ(listed("jobs"), (std::vector<int>{3}));
  simulator->ClearFaults(0);
  Run("jobs");
  for (const std::string& line : Split(out, '\n')) EXPECT_LE(line.size(), 80U) << line;
  Run("jobs --long");
  EXPECT_THAT(out, HasSubstr("EXPOSE-MS"));
}

}  // namespace
}  // namespace NuvCtl
