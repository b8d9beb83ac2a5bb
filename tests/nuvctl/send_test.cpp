#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "error.h"
#include "fake_library.h"

namespace nuvctl {
namespace {

struct SendTest : testing::Test {
  void SetUp() override {
    fake = FakeLibrary();
    fake.before_step = [this](size_t) { system.now += 1000; };
    std::ofstream(std::filesystem::u8path(file)) << "data";
  }
  void TearDown() override { std::filesystem::remove(std::filesystem::u8path(file)); }
  bool Sent() const {
    return std::find(fake.calls.begin(), fake.calls.end(), "send") != fake.calls.end();
  }

  const std::string file = testing::TempDir() + "nuvctl_Zähne_牙.nuv";
  FakeSystem system;
};

TEST_F(SendTest, SaysAcceptedOnlyWhenThePrinterTookTheWholeJob) {
  const struct {
    const char* name;
    std::vector<MarkAnswer> marks;  // the first before the job
    std::vector<StateAnswer> states;
    std::vector<int> sent;
    int send_result, exit;
    const char* outcome;  // error code, or result
    bool sends;
  } kRows[] = {
      {"taken", {{0, 6, 10}, {0, 7, 1000}}, {{0, 0, 0}}, {500, 1000}, 0, kDone, "accepted", true},
      {"first job ever",
       {{0, 0, 0}, {0, 1, 1000}},
       {{0, 0, 0}},
       {1000},
       0,
       kDone,
       "accepted",
       true},
      {"taken late",
       {{0, 6, 10}, {0, 6, 10}, {0, 7, 900}, {0, 7, 1000}},
       {{0, 0, 0}},
       {1000},
       0,
       kDone,
       "accepted",
       true},
      {"old job of equal size",
       {{0, 6, 1000}},
       {{0, 0, 0}},
       {1000},
       0,
       kPrinterFailed,
       "job_not_taken",
       true},
      {"bytes missing",
       {{0, 6, 10}, {0, 7, 999}},
       {{0, 0, 0}},
       {1000},
       0,
       kPrinterFailed,
       "job_not_taken",
       true},
      {"no count, prints",
       {{29, 0, 0}},
       {{0, 0, 0}, {0, 2, 0}, {0, 1, 0}},
       {1000},
       0,
       kDone,
       "accepted",
       true},
      {"no count, idle",
       {{29, 0, 0}},
       {{0, 0, 0}},
       {1000},
       0,
       kPrinterFailed,
       "job_not_taken",
       true},
      {"count refused afterwards",
       {{0, 6, 10}, {29, 0, 0}},
       {{0, 0, 0}},
       {1000},
       0,
       kPrinterFailed,
       "job_not_taken",
       true},
      {"silent afterwards",
       {{0, 6, 10}, {1, 0, 0}},
       {{0, 0, 0}},
       {1000},
       0,
       kConnectionProblem,
       "job_unconfirmed",
       true},
      {"silent before",
       {{1, 0, 0}},
       {{0, 0, 0}},
       {1000},
       0,
       kConnectionProblem,
       "no_answer",
       false},
      {"more sent than announced",
       {{0, 6, 10}, {0, 7, 1000}},
       {{0, 0, 0}},
       {500, 1001},
       0,
       kFileProblem,
       "size_mismatch",
       true},
      {"nothing to send",
       {{0, 6, 10}, {0, 7, 0}},
       {{0, 0, 0}},
       {},
       0,
       kFileProblem,
       "file_empty",
       true},
      {"line lost",
       {{0, 6, 10}, {0, 7, 1000}},
       {{0, 0, 0}},
       {500},
       20,
       kConnectionProblem,
       "write_failed",
       true},
      {"opening failed", {{0, 6, 10}}, {{0, 0, 0}}, {}, 1, kConnectionProblem, "no_answer", true},
      {"printing", {{0, 6, 10}}, {{0, 1, 0}}, {}, 0, kPrinterFailed, "busy", false},
      {"receiving", {{0, 6, 10}}, {{0, 2, 0}}, {}, 0, kPrinterFailed, "busy", false},
      {"in error", {{0, 6, 10}}, {{0, 3, 17}}, {}, 0, kPrinterFailed, "printer_error", false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    SetUp();
    fake.marks.answers = row.marks;
    fake.states.answers = row.states;
    fake.sent = row.sent;
    fake.send_result = row.send_result;
    const CommandRun run({"send", file, "--json"}, system);
    const nlohmann::json document = run.Json();
    EXPECT_EQ(run.exit, row.exit);
    EXPECT_EQ(row.exit == kDone ? document["result"] : document["error"]["code"], row.outcome);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(Sent(), row.sends);
    EXPECT_EQ(fake.on_cancel, nullptr);
    EXPECT_FALSE(system.watched);
  }
}

TEST_F(SendTest, ShowsProgressAndHandsOverTheNameUnchanged) {
  const CommandRun run({"send", file}, system);
  EXPECT_EQ(run.out, "Sent " + file + ": 1.0 kB in 0:02. The printer took it as job 7.\n");
  EXPECT_EQ(run.err, "Sending " + file +
                         " to SN1\n"
                         " 50%  500 B of 1.0 kB  500 B/s  0:01 left\n"
                         "100%  1.0 kB of 1.0 kB  500 B/s\n");
  EXPECT_EQ(fake.path.substr(fake.path.rfind(L'_') - 5), L"Zähne_牙.nuv");
  system.terminal = true;
  const CommandRun bar({"gcode", file}, system);
  EXPECT_NE(bar.err.find("\r[####################"), std::string::npos) << bar.err;
  EXPECT_EQ(bar.out,
            "Sent " + file + ": 1.0 kB in 0:02. The printer does not confirm command files.\n");
}

TEST_F(SendTest, CtrlCCancelsAndIsNeverASuccess) {
  for (const char* command : {"send", "gcode"}) {
    SetUp();
    system.interrupted = false;
    fake.before_step = [this](size_t step) { system.interrupted = step == 1; };
    const CommandRun run({command, file, "--json"}, system);
    const nlohmann::json document = run.Json();
    EXPECT_EQ(run.exit, kCancelled);
    EXPECT_EQ(document["error"]["code"], "cancelled");
    EXPECT_EQ(document["bytes"], 500);
  }
}

TEST_F(SendTest, CtrlCAfterTheLastLineDoesNotHideWhatWasSent) {
  fake.at_end = [this] { system.interrupted = true; };
  const CommandRun run({"gcode", file}, system);
  EXPECT_EQ(run.exit, kDone);
  EXPECT_NE(run.err.find("too late to cancel"), std::string::npos);
}

TEST_F(SendTest, RefusesABadFileBeforeAnySearch) {
  for (const std::string& name :
       {file + ".missing", testing::TempDir(), std::string("Z\xE4hne.nuv")}) {
    for (const char* command : {"send", "gcode"}) {
      const CommandRun run({command, name, "--json"}, system);
      EXPECT_EQ(run.exit, kFileProblem);
      EXPECT_EQ(run.Json()["error"]["code"], "file_not_readable");
      EXPECT_TRUE(fake.calls.empty());
    }
  }
}

}  // namespace
}  // namespace nuvctl
