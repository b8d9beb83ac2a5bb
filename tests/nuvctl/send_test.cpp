#include <filesystem>
#include <fstream>

#include "command_fixture.h"

namespace nuvctl {
namespace {

constexpr MarkAnswer kBefore = {0, 6, 10};
constexpr MarkAnswer kTaken = {0, 7, 1000};
constexpr MarkAnswer kSilent = {NUV_FAILED, 0, 0};
constexpr MarkAnswer kNotCounted = {NUV_PRINTER_REFUSED, 0, 0};

struct SendTest : CommandTest {
  void SetUp() override {
    CommandTest::SetUp();
    fake.before_step = [this](size_t) { system.now += 1000; };
    std::ofstream(std::filesystem::u8path(file)) << "data";
  }
  void TearDown() override { std::filesystem::remove(std::filesystem::u8path(file)); }

  const std::string file = testing::TempDir() + "nuvctl_Zähne_牙.nuv";
};

TEST_F(SendTest, SaysAcceptedOnlyWhenThePrinterTookTheWholeJob) {
  const struct {
    const char *name, *outcome;  // error code, or result
    ExitCode exit;
    std::vector<MarkAnswer> marks;  // the first before the job
    std::vector<StateAnswer> states = {kIdle};
    std::vector<int> sent = {1000};
    int send_result = NUV_OK;
  } kRows[] = {
      {"taken", "accepted", kDone, {kBefore, kTaken}, {kIdle}, {500, 1000}},
      {"first job ever", "accepted", kDone, {{0, 0, 0}, {0, 1, 1000}}},
      {"taken late", "accepted", kDone, {kBefore, kBefore, {0, 7, 900}, kTaken}},
      {"old job of equal size", "job_not_taken", kPrinterFailed, {{0, 6, 1000}}},
      {"bytes missing", "job_not_taken", kPrinterFailed, {kBefore, {0, 7, 999}}},
      {"no count, prints", "accepted", kDone, {kNotCounted}, {kIdle, kReceiving, kPrinting}},
      {"no count, idle", "job_not_taken", kPrinterFailed, {kNotCounted}},
      {"count refused afterwards", "job_not_taken", kPrinterFailed, {kBefore, kNotCounted}},
      {"silent afterwards", "job_unconfirmed", kConnectionProblem, {kBefore, kSilent}},
      {"more than announced", "size_mismatch", kFileProblem, {kBefore, kTaken}, {kIdle}, {1001}},
      {"nothing to send", "file_empty", kFileProblem, {kBefore, {0, 7, 0}}, {kIdle}, {}},
      {"lost", "write_failed", kConnectionProblem, {kBefore}, {kIdle}, {500}, NUV_WRITE_FAILED},
      {"not opened", "no_answer", kConnectionProblem, {kBefore}, {kIdle}, {}, NUV_FAILED},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    SetUp();
    fake.marks.answers = row.marks;
    fake.states.answers = row.states;
    fake.sent = row.sent;
    fake.send_result = row.send_result;
    EXPECT_EQ(Json({"send", file}).exit, row.exit);
    EXPECT_EQ(row.exit == kDone ? document["result"] : document["error"]["code"], row.outcome);
    EXPECT_TRUE(Called("send"));
    EXPECT_EQ(fake.on_cancel, nullptr);
    EXPECT_FALSE(system.watched);
  }
}

TEST_F(SendTest, SendsNothingToAPrinterThatIsNotReady) {
  for (const StateAnswer& state : {kPrinting, kReceiving, kInError}) {
    fake.states.answers = {state};
    Ends({"send", file}, kPrinterFailed, state.error_number != 0 ? "printer_error" : "busy");
    EXPECT_FALSE(Called("send"));
  }
  fake.states.answers = {kIdle};
  fake.marks.answers = {kSilent};
  Ends({"send", file}, kConnectionProblem, "no_answer");
  EXPECT_FALSE(Called("send"));
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
  fake.before_step = [this](size_t step) { system.interrupted = step == 1; };
  for (const char* command : {"send", "gcode"}) {
    Ends({command, file}, kCancelled, "cancelled");
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
    Ends({"send", name}, kFileProblem, "file_not_readable");
    Ends({"gcode", name}, kFileProblem, "file_not_readable");
    EXPECT_TRUE(fake.calls.empty());
  }
}

}  // namespace
}  // namespace nuvctl
