#include <filesystem>
#include <fstream>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

constexpr MarkAnswer kBefore = {0, 6, 10};
constexpr MarkAnswer kTaken = {0, 7, 1000};
constexpr MarkAnswer kSilent = {NUV_FAILED, 0, 0};
constexpr MarkAnswer kNotCounted = {NUV_PRINTER_REFUSED, 0, 0};
constexpr int kCut = NUV_WRITE_FAILED, kFull = NUV_NO_BUFFER_SPACE;

struct JobsTest : CommandTest {
  void SetUp() override {
    CommandTest::SetUp();
    g_fake.beforeStep = [this](size_t) { system.now += 1000; };
    std::ofstream(std::filesystem::u8path(file)) << "data";
  }
  void TearDown() override { std::filesystem::remove(std::filesystem::u8path(file)); }

  const std::string file = testing::TempDir() + "nuvctl_Zähne_牙.nuv";
};

TEST_F(JobsTest, SaysAcceptedOnlyWhenThePrinterTookTheWholeJob) {
  const std::vector<StateAnswer> kBegins = {kIdle, kReceiving, kPrinting};
  const struct {
    const char *name, *outcome;  // error code, or result
    ExitCode exit;
    std::vector<MarkAnswer> marks;  // the first before the job
    std::vector<int> sent = {1000};
    int sendResult = NUV_OK;
    bool leaves = false;  // perhaps a job that is still open
    std::vector<StateAnswer> states = {kIdle};
  } kRows[] = {
      {"taken", "accepted", kDone, {kBefore, kTaken}, {500, 1000}},
      {"first job ever", "accepted", kDone, {{0, 0, 0}, {0, 1, 1000}}},
      {"taken late", "accepted", kDone, {kBefore, kBefore, {0, 7, 900}, kTaken}},
      {"old job of equal size", "job_not_taken", kPrinterFailed, {{0, 6, 1000}}},
      {"bytes missing", "job_not_taken", kPrinterFailed, {kBefore, {0, 7, 9}}, {1000}, 0, true},
      {"prints", "accepted", kDone, {kNotCounted}, {1000}, 0, false, kBegins},
      {"no count, idle", "job_not_taken", kPrinterFailed, {kNotCounted}},
      {"count refused afterwards", "job_not_taken", kPrinterFailed, {kBefore, kNotCounted}},
      {"silent afterwards", "job_unconfirmed", kConnectionProblem, {kBefore, kSilent}},
      {"closed behind it", "accepted", kDone, {kBefore, kSilent, kTaken}},
      {"more than announced", "size_mismatch", kFileProblem, {kBefore, kTaken}, {1001}},
      {"nothing to send", "file_empty", kFileProblem, {kBefore, {0, 7, 0}}, {}},
      {"not opened", "no_answer", kConnectionProblem, {kBefore}, {}, NUV_FAILED},
      {"refused", "job_refused", kPrinterFailed, {kBefore}, {}, NUV_PRINTER_REFUSED, true},
      {"cut at the end", "accepted", kDone, {kBefore, kTaken}, {1000}, kCut},
      {"cut, then late", "accepted", kDone, {kBefore, {0, 7, 900}, kTaken}, {900}, kFull},
      {"cut within", "write_failed", kConnectionProblem, {kBefore, {0, 7, 9}}, {10}, kCut, true},
      {"no space", "no_buffer_space", kPrinterFailed, {kBefore, {0, 7, 0}}, {}, kFull, true},
      {"nothing there", "write_failed", kConnectionProblem, {kBefore}, {1000}, kCut},
      {"cut, silent", "write_failed", kConnectionProblem, {kBefore, kSilent}, {10}, kCut, true},
      {"silent", "job_unconfirmed", kConnectionProblem, {kBefore, kSilent}, {1000}, kCut, true},
      {"cut, no count", "job_unconfirmed", kConnectionProblem, {kNotCounted}, {1000}, kCut, true},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    SetUp();
    g_fake.marks.answers = row.marks;
    g_fake.states.answers = row.states;
    g_fake.sent = row.sent;
    g_fake.sendResult = row.sendResult;
    EXPECT_EQ(Json({"send", file}).exit, row.exit);
    EXPECT_EQ(row.exit == kDone ? document["result"] : document["error"]["code"], row.outcome);
    // The job's number is there when it is known.
    EXPECT_EQ(document.value("job_index", 0), row.exit == kDone ? row.marks.back().index : 0);
    EXPECT_TRUE(row.exit != kDone || document["bytes"] == 1000);
    EXPECT_EQ(document.dump().find("F104 S2") != std::string::npos, row.leaves);
    EXPECT_TRUE(Called("send"));
    EXPECT_EQ(g_fake.record.onCancel, nullptr);
    EXPECT_FALSE(system.watched);
  }
}

TEST_F(JobsTest, AsksTheSamePrinterOnlyWhatItHasAfterACut) {
  using Devices = std::vector<std::array<std::string, 4>>;
  const Devices kOne = {{"10.0.0.9", "SN1", "M", ""}};
  const Devices kOther = {{"10.0.0.9", "SN2", "M", ""}};
  const Devices kTwo = {{"10.0.0.1", "SN2", "M", ""}, kOne[0]};
  const Devices kNameless = {{"10.0.0.8", "", "M", ""}};
  const Devices kNode = {{"/dev/usb/lp0\\1", "", "M", ""}};
  const Devices kOtherNode = {{"/dev/usb/lp1\\1", "", "M", ""}};
  const struct {
    const char* options;
    Devices before, after;
    std::string reopened;  // empty: it is not asked
    int missed = 0;        // searches without an answer
  } kRows[] = {
      {"", kOne, kTwo, "open 1"},
      {"", kOne, kOther, ""},
      {"", kOne, kOne, "open 0", 2},
      {"", kOne, kOne, "", 3},
      {" --serial SN1", kTwo, kOne, "open 0"},
      {" --index 1", kTwo, kOne, "open 0"},
      {" --address 10.0.0.9", kOne, kTwo, "open 10.0.0.9"},
      {" --address 10.0.0.9", kOne, kOther, ""},
      {"", kNameless, {kTwo[0], kNameless[0]}, "open 10.0.0.8"},
      {" --usb", kNode, kNode, "open usb 0"},
      {" --usb", kNode, kOtherNode, ""},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.options + std::string(": ") + row.reopened);
    SetUp();
    g_fake.devices = row.before;
    g_fake.kind = row.options == std::string(" --usb") ? NUV_KIND_USB : NUV_KIND_NETWORK;
    g_fake.atEnd = [&row] {
      g_fake.devices = row.after;
      g_fake.missedSearches = row.missed;
    };
    g_fake.sendResult = kCut;
    g_fake.marks.answers = {kBefore, kTaken, kTaken};
    Words arguments = Split("send" + std::string(row.options));
    arguments.push_back(file);
    EXPECT_EQ(Json(arguments).exit, row.reopened.empty() ? kConnectionProblem : kDone);
    EXPECT_EQ(g_fake.marks.next > 1, !row.reopened.empty());
    EXPECT_TRUE(row.reopened.empty() || g_fake.calls.back() == row.reopened);
  }
}

TEST_F(JobsTest, TellsWhatACutLeaves) {
  g_fake.sendResult = kCut;
  g_fake.marks.answers = {kBefore, {0, 7, 9}};
  const CommandRun part({"send", file}, system);
  EXPECT_NE(part.err.find("has 9 of 1000 bytes of it, as job 7"), std::string::npos) << part.err;
}

TEST_F(JobsTest, SendsNothingToAPrinterThatIsNotReady) {
  for (const StateAnswer& state : {kPrinting, kReceiving, kInError}) {
    g_fake.states.answers = {state};
    Ends({"send", file}, kPrinterFailed, state.errorNumber != 0 ? "printer_error" : "busy");
    EXPECT_FALSE(Called("send"));
  }
  g_fake.states.answers = {kIdle};
  g_fake.marks.answers = {kSilent};
  Ends({"send", file}, kConnectionProblem, "no_answer");
  EXPECT_FALSE(Called("send"));
}

TEST_F(JobsTest, ShowsProgressAndHandsOverTheNameUnchanged) {
  const CommandRun run({"send", file}, system);
  EXPECT_EQ(run.out, "Sent " + file + ": 1.0 kB in 0:02. The printer took it as job 7.\n");
  EXPECT_EQ(run.err, "Sending " + file +
                         " to SN1\n"
                         " 50%  500 B of 1.0 kB  500 B/s  0:01 left\n"
                         "100%  1.0 kB of 1.0 kB  500 B/s\n");
  EXPECT_EQ(g_fake.record.path.substr(g_fake.record.path.rfind(L'_') - 5), L"Zähne_牙.nuv");
  system.terminal = true;
  const CommandRun bar({"gcode", file}, system);
  EXPECT_NE(bar.err.find("\r[####################"), std::string::npos) << bar.err;
  EXPECT_EQ(bar.out,
            "Sent " + file + ": 1.0 kB in 0:02. The printer does not confirm command files.\n");
}

TEST_F(JobsTest, CtrlCCancelsAndIsNeverASuccess) {
  g_fake.beforeStep = [this](size_t step) { system.interrupted = step == 1; };
  for (const char* command : {"send", "gcode"}) {
    Ends({command, file}, kCancelled, "cancelled");
    EXPECT_EQ(document["bytes"], 500);
  }
}

TEST_F(JobsTest, CtrlCAfterTheLastLineDoesNotHideWhatWasSent) {
  g_fake.atEnd = [this] { system.interrupted = true; };
  const CommandRun run({"gcode", file}, system);
  EXPECT_EQ(run.exit, kDone);
  EXPECT_NE(run.err.find("too late to cancel"), std::string::npos);
}

TEST_F(JobsTest, RefusesABadFileBeforeAnySearch) {
  for (const std::string& name :
       {file + ".missing", testing::TempDir(), std::string("Z\xE4hne.nuv")}) {
    Ends({"send", name}, kFileProblem, "file_not_readable");
    EXPECT_TRUE(g_fake.calls.empty());
  }
}

}  // namespace
}  // namespace NuvCtl
