// What a job puts on the wire, and how it ends, on a clock that costs no time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <locale>

#include "job/machine_ids.h"
#include "job/printer_exchange.h"
#include "tests/job/job_fixture.h"
#include "tests/support/protocol_page.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;

#if defined(_WIN32)
constexpr char kDevice[] = "NUL";
#else
constexpr char kDevice[] = "/dev/null";
#endif

TEST_F(JobTest, OpensAndStreamsLineByLine) {
  files.lines = {"abc", "", "defgh"};
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_THAT(printer.Wire(),
              ElementsAre("F102\r\n",
                          "F103 S8 L12 T0.050000 R90 V7.500000 C1.500000 E8.000000 H6.000000 "
                          "Y2.500000 U3.000000 P80.000000\r\n",
                          "F117\r\n", "F117\r\n", "abc\r\n", "\r\n", "defgh\r\n"));
  EXPECT_EQ(g_host.starts, 1);
  EXPECT_THAT(g_host.updates, ElementsAre(std::pair(8, 3), std::pair(8, 3), std::pair(8, 8)));
  EXPECT_THAT(g_host.percents, ElementsAre(37.5F, 37.5F, 100.0F));
  EXPECT_EQ(clock.SleptMs(), 300) << "100 ms per pass";
  EXPECT_EQ(files.closes, 1);
}

TEST_F(JobTest, WhatThePrintFileDoesNotTellIsZero) {
  files.arguments.clear();
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(printer.Wire()[1],
            "F103 S0 L0 T0.000000 R0 V0.000000 C0.000000 E0.000000 H0.000000 Y0.000000 U0.000000 "
            "P0.000000\r\n");
}

TEST_F(JobTest, EstimateShrinksByTheRunningTotal) {
  files.lines = {"aaa", "aaa", "aaa"};  // 5 bytes each on the wire: 5, 10, 15 are taken off
  HasFreeBuffer(30);
  state.freeBuffer = 0;
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(state.freeBuffer, 0U) << "30 - 5 - 10 - 15";
  HasFreeBuffer(29);
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(state.freeBuffer, 0U) << "never wraps below 0";
}

TEST_F(JobTest, AsksAgainAndReopensUntilTheLineFits) {
  files.lines = {"aaaaaaaa", "bb"};
  // Opening, start of the transfer, two questions in vain, then room for both lines.
  printer.Replies({"F102 OK S:0", "F103 OK", "F117 OK S:9", "F117 OK S:9", "F117 OK S:0", "F117 NG",
                   "F117 OK S:100"});
  EXPECT_EQ(Send(), NUV_OK);
  const Strings& wire = printer.Wire();
  EXPECT_THAT(Strings(wire.begin() + 4, wire.end()),
              ElementsAre("F117\r\n", "<open>", "F117\r\n", "<open>", "F117\r\n", "<open>",
                          "aaaaaaaa\r\n", "bb\r\n"));
  EXPECT_EQ(clock.SleptMs(), 500);
  EXPECT_THAT(g_host.errors, ElementsAre(std::pair(29, 117)));
}

// Bytes that no reply has confirmed are lost with the link that they were written on; confirmed
// ones are not, and the job goes on over a new link.
TEST_F(JobTest, AnEndedLinkIsNoSuccess) {
  const struct {
    const char* name;
    int endsAfter;  // lines
    int freeBuffer;
    bool asGCode;
    int result;
    const char* data;
    std::vector<std::pair<int, int>> errors;
  } kRows[] = {
      {"behind the last line", 3, 1000, false, NUV_WRITE_FAILED, "one\r\ntwo\r\nsix\r\n", {}},
      {"the same as commands", 3, 1000, true, NUV_WRITE_FAILED, "one\r\ntwo\r\nsix\r\n", {}},
      {"before the wait", 2, 12, false, NUV_WRITE_FAILED, "one\r\ntwo\r\n", {{-1, 117}}},
      {"before any line", 0, 4, true, NUV_NO_BUFFER_SPACE, "", {{-1, 117}, {-1, 117}}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    StartAnew();
    files.lines = {"one", "two", "six"};
    WriteFile("one\ntwo\nsix\n");
    HasFreeBuffer(row.freeBuffer);
    printer.endsAfterBlocks = row.endsAfter;
    printer.opens = row.endsAfter != 0;
    EXPECT_EQ(ToldResultOf(row.asGCode ? &JobTest::SendCommands : &JobTest::Send), row.result);
    EXPECT_EQ(printer.Data(), row.data);
    EXPECT_EQ(g_host.errors, row.errors);
    EXPECT_EQ(told.find("job: the link ended after 6 of 9 bytes") != std::string::npos,
              row.endsAfter == 2);
  }
}

// A command that was sent again may have been taken twice; nobody else's job is ended for that.
TEST_F(JobTest, ARefusedOpeningEndsTheJobAndAbandonsOnlyItsOwn) {
  const std::string idle = "F102 OK S:0";
  const std::string receiving = "F102 OK S:2";
  const std::tuple<const char*, Strings, bool> rows[] = {
      {"refused", {idle, "F103 NG S:1"}, false},
      {"refused at once while receiving", {idle, "F103 NG S:2", receiving}, false},
      {"taken the first time", {idle, "", "F103 NG S:2", receiving}, true},
      {"another's job before", {receiving, "", "F103 NG S:2", receiving}, false},
      {"printing now", {idle, "", "F103 NG S:1", "F102 OK S:1"}, false},
      {"no state before", {"F102 OK", "", "F103 NG S:2", receiving}, false},
      {"no answer now", {idle, "", "F103 NG S:2", "", "", ""}, false},
      {"nonsense now", {idle, "", "F103 NG S:2", "Fx OK"}, false},
  };
  for (const auto& [name, replies, abandoned] : rows) {
    SCOPED_TRACE(name);
    StartAnew();
    files.lines = {"one"};
    printer.Replies(replies);
    printer.Always("F102", "");
    EXPECT_EQ(Send(), NUV_PRINTER_REFUSED);
    EXPECT_EQ(printer.Data(), "");
    EXPECT_EQ(printer.Wire().back() == "F104 S2\r\n", abandoned);
  }
}

struct EndRow {
  const char* name;
  Fault fault;
  int result;
  const char* data;
  int closes = 0;          // of the print file
  bool abandoned = false;  // on the printer
};

class JobEndTest : public JobTest {
 public:
  void ExpectEnds(const std::vector<EndRow>& rows, int (JobTest::*send)()) {
    for (const EndRow& row : rows) {
      SCOPED_TRACE(row.name);
      StartAnew();
      files.lines = {"one", "two"};
      WriteFile("G28\nG29\n");
      row.fault(*this);
      EXPECT_EQ(ToldResultOf(send), row.result);
      EXPECT_EQ(printer.Data(), row.data);
      EXPECT_EQ(files.closes, row.closes);
      EXPECT_TRUE(state.linkFree);
      const Strings& wire = printer.Wire();
      EXPECT_EQ(std::count(wire.begin(), wire.end(), "F104 S2\r\n"), row.abandoned ? 1 : 0);
      if (row.result == NUV_WRITE_FAILED) {
        const std::string after =
            row.data[0] == '\0' ? "after 0 of 6 bytes: " : "after 3 of 6 bytes: ";
        EXPECT_THAT(told, ::testing::HasSubstr("line not written " + after));
      }
    }
  }
};

// A cancel stops before the next line, and the printer is told; what was sent stays sent.
TEST_F(JobEndTest, OfAPrintFile) {
  const auto missing = [](JobTest& t) { std::filesystem::remove(t.path); };
  const auto noLibrary = [](JobTest& t) { t.files.available = false; };
  const auto refused = [](JobTest& t) { t.files.accepts = false; };
  const auto foreign = [](JobTest& t) { t.files.machineId = "3DPSNKGA3WTW00001"; };
  const auto noLines = [](JobTest& t) { t.files.lines.clear(); };
  const auto badLine = [](JobTest& t) { t.files.unreadable = 1; };
  const auto badLineThenNonsense = [](JobTest& t) {
    t.files.unreadable = 1;
    t.printer.Always("F104", "Fx OK");
  };
  const auto device = [](JobTest& t) { t.path = kDevice; };
  const auto bufferUnknown = [](JobTest& t) { t.printer.Always("F117", "F117 NG S:99"); };
  ExpectEnds(
      {
          {"missing file", missing, NUV_FILE_NOT_READABLE, ""},
          {"no NuvFile", noLibrary, NUV_NUVFILE_MISSING, ""},
          {"refused file", refused, NUV_FILE_NOT_READABLE, ""},
          {"no sender", foreign, NUV_NO_JOB_SENDER, "", 1},
          {"opening unanswered", Silent("F103"), NUV_FAILED, ""},
          {"opening refused", Refused("F103"), NUV_PRINTER_REFUSED, ""},
          {"no buffer at the opening", FreeBuffer(0), NUV_NO_BUFFER_SPACE, ""},
          {"buffer query refused", bufferUnknown, NUV_NO_BUFFER_SPACE, ""},
          {"lost while waiting", LostWithFreeBuffer(4), NUV_NO_BUFFER_SPACE, "", 1},
          {"write fails", WritesFailAfter(1), NUV_WRITE_FAILED, "one\r\n", 1},
          {"damaged line", badLine, NUV_FILE_NOT_READABLE, "one\r\n", 1, true},
          {"damaged line, then nonsense", badLineThenNonsense, NUV_FILE_NOT_READABLE, "one\r\n", 1,
           true},
          {"a device", device, NUV_FILE_NOT_READABLE, ""},
          {"no lines", noLines, NUV_OK, "", 1},
          {"cancelled at once", CancelledFrom(0), NUV_OK, "", 1, true},
          {"cancelled", CancelledFrom(1), NUV_OK, "one\r\n", 1, true},
          {"cancelled behind the last line", CancelledFrom(2), NUV_OK, "one\r\ntwo\r\n", 1, true},
      },
      &JobTest::Send);
}

TEST_F(JobEndTest, OfACommandFile) {
  const auto missing = [](JobTest& t) { std::filesystem::remove(t.path); };
  const auto folder = [](JobTest& t) { t.path = ::testing::TempDir(); };
  const auto empty = [](JobTest& t) { t.WriteFile(""); };
  const auto device = [](JobTest& t) { t.path = kDevice; };
  ExpectEnds(
      {
          {"missing file", missing, NUV_FILE_NOT_READABLE, ""},
          {"a folder", folder, NUV_FILE_NOT_READABLE, ""},
          {"empty file", empty, NUV_OK, ""},
          {"cancelled", CancelledFrom(1), NUV_OK, "G28\r\n"},
          {"write fails", WritesFailAfter(0), NUV_WRITE_FAILED, ""},
          // The line end needs room too, but is not charged: of ten bytes seven are left.
          {"fits exactly, then lost", LostWithFreeBuffer(5), NUV_NO_BUFFER_SPACE, "G28\r\n"},
          {"its line end does not fit", LostWithFreeBuffer(4), NUV_NO_BUFFER_SPACE, ""},
          {"charged without line ends", LostWithFreeBuffer(8), NUV_OK, "G28\r\nG29\r\n"},
          {"a device", device, NUV_FILE_NOT_READABLE, ""},
      },
      &JobTest::SendCommands);
}

TEST_F(JobTest, MalformedBufferFigureLeavesTheLinkFree) {
  files.lines = {"one"};
  printer.Replies({"F102 OK S:0", "F103 OK", "F117 OK S:99", "F117 OK S:abc"});
  EXPECT_THROW(Send(), std::invalid_argument);
  EXPECT_EQ(files.closes, 1);
}

// An export tells by the mark whether the exception that passes through it is the host's.
TEST_F(JobTest, HostThatThrowsIsMarkedAsSuch) {
  struct Thrown {};
  const auto progress = [](float) { throw Thrown(); };
  const std::function<void()> calls[] = {
      [this] {
        callbacks.errorCode = [](int, int) { throw Thrown(); };
        Silent("F103")(*this);
      },
      [this] { callbacks.sendStart = [] { throw Thrown(); }; },
      [this] { callbacks.sendUpdate = [](int, int) { throw Thrown(); }; },
      [this] { callbacks.sendCancel = []() -> bool { throw Thrown(); }; },
      [this, progress] { SendPrintFile(Context(), path.wstring(), progress); },
  };
  for (const auto& prepare : calls) {
    StartAnew();
    files.lines = {"one"};
    HostThrew() = false;
    EXPECT_THROW((prepare(), Send()), Thrown);
    EXPECT_TRUE(HostThrew());
  }
  StartAnew();
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_FALSE(HostThrew()) << "the last callback returned";
}

// Numbers of a print file have a point, whatever the host program's numbers have.
TEST_F(JobTest, TheHostsLocaleDoesNotChangeWhatAPrintFileSays) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  files.lines = {"one"};
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  EXPECT_EQ(Send(), NUV_OK);
  std::locale::global(before);
  EXPECT_THAT(printer.Wire(), ::testing::Contains(::testing::HasSubstr(" T0.050000 ")));
}

TEST_F(JobTest, PathsThatTheSystemCannotNameAreRefused) {
  const std::wstring unnamed(1, static_cast<wchar_t>(0xD800));
  EXPECT_THAT(
      ToldBy([&] { EXPECT_EQ(SendPrintFile(Context(), unnamed, nullptr), NUV_FILE_NOT_READABLE); }),
      ::testing::HasSubstr("narrow characters"));
}

// The print-file library of the process holds one open file; commands need only their own link.
TEST_F(JobTest, SecondJobMeanwhileIsRefused) {
  files.lines = {"one"};
  JobState other;
  ScriptedChannel otherPrinter;
  otherPrinter.Always("F117", "F117 OK S:100");
  WriteFile("G28");
  int commands = -1;
  int printFileElsewhere = -1;
  int commandsElsewhere = -1;
  printer.onExecute = [&] {
    const JobContext elsewhere{otherPrinter, clock, files, callbacks, other};
    const std::string refused = "[NKG]job refused: another one is running\n";
    EXPECT_EQ(ToldBy([&] { commands = SendCommands(); }), refused);
    EXPECT_EQ(
        ToldBy([&] { printFileElsewhere = SendPrintFile(elsewhere, path.wstring(), nullptr); }),
        refused);
    commandsElsewhere = SendGCodeFile(elsewhere, path.wstring(), nullptr);
  };
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(commands, NUV_FAILED);
  EXPECT_EQ(printFileElsewhere, NUV_FAILED);
  EXPECT_EQ(commandsElsewhere, NUV_OK);
  EXPECT_EQ(printer.Data(), "one\r\n");
  EXPECT_FALSE(other.jobRunning);
}

// Whoever can interrupt a job, and does it when the printer is asked for space once more.
class Interrupting final : public IJobHost {
 public:
  explicit Interrupting(Platform::Interrupt& interrupt) : interrupt_(interrupt) {}
  void ReportError(int, int) override {}
  void ReportStart() override {}
  void ReportSent(int, int) override { FAIL() << "there is no room"; }
  bool IsCancelled() override { return interrupt_.Raised(); }
  void ReportOpening() override { story += "opening "; }
  void ReportWaiting() override {
    story += "waiting ";
    interrupt_.Raise();
  }
  void ReportAbandoned(bool accepted) override { story += accepted ? "dropped" : "kept"; }

  std::string story;

 private:
  Platform::Interrupt& interrupt_;
};

TEST_F(JobTest, AnInterruptedJobIsAbandonedBehindTheQuestionUnderWay) {
  for (const bool answers : {true, false}) {
    StartAnew();
    files.lines = {std::string(200, 'x')};
    HasFreeBuffer(100);
    Platform::Interrupt interrupt;
    Interrupting host(interrupt);
    printer.onExecute = [&] {
      if (printer.Wire().back() != "F104 S2\r\n") return;
      EXPECT_TRUE(printer.lastIsAgain) << "it does not wait for what is owed";
      printer.Replies({"F117 OK S:9"});
      if (answers) printer.Replies({"F104 OK"});
    };
    const JobContext context{printer, clock, files, host, state, &interrupt};
    EXPECT_EQ(SendPrintFile(context, path.wstring(), nullptr), NUV_OK);
    EXPECT_EQ(host.story, std::string("opening waiting ") + (answers ? "dropped" : "kept"));
    const Strings& wire = printer.Wire();
    EXPECT_THAT(wire, ::testing::Not(::testing::Contains("<open>")));
    EXPECT_THAT(Strings(wire.end() - 3, wire.end()),
                ::testing::ElementsAre("F117\r\n", "F104 S2\r\n", "<read>"));
  }
}

// What the file becomes while it is sent changes nothing.
TEST_F(JobTest, CommandTextIsReadOnceBeforeItsFirstLine) {
  WriteFile("G28\nG29 X1\n");
  printer.onExecute = [&] { WriteFile("G2"); };
  EXPECT_EQ(SendCommands(), NUV_OK);
  EXPECT_EQ(printer.Data(), "G28\r\nG29 X1\r\n");
}

TEST_F(JobTest, CommandTextIsBounded) {
  for (const auto& [text, total] : {std::pair("12345\r\n\n678\n90", 10),
                                    {"1234567890\r\n", 10},
                                    {"1234567890\r", 10},
                                    {"12345\n678\n901", -1},
                                    {"12345678901", -1},
                                    {"1234567890\r1", -1}}) {
    SCOPED_TRACE(text);
    WriteFile(text);
    CommandText commands(10);
    EXPECT_EQ(commands.Read(path.string()), total >= 0);
    if (total >= 0) {
      EXPECT_EQ(commands.Total(), total);
    }
  }
}

// One claim from the first command to the last line: a poll between them would end the connection.
TEST_F(JobTest, HoldsTheLinkFromItsFirstCommand) {
  files.lines = {"one"};
  int commands = 0;
  printer.onExecute = [&] {
    ++commands;
    EXPECT_FALSE(state.linkFree);
    EXPECT_EQ(printer.job, JobKind::kLines);
  };
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(commands, 4) << "102, 103, 117, 117";
  EXPECT_EQ(printer.job, JobKind::kNone);
}

TEST_F(JobTest, CommandTextGoesOutLineByLine) {
  WriteFile("G28\r\n\nM104 S200\nG1 X1\r\n\r\nend");
  EXPECT_EQ(SendCommands(), NUV_OK);
  EXPECT_THAT(printer.Wire(),
              ElementsAre("F117\r\n", "G28\r\n", "M104 S200\r\n", "G1 X1\r\n", "end\r\n"));
  EXPECT_THAT(g_host.updates, ElementsAre(std::pair(20, 3), std::pair(20, 12), std::pair(20, 17),
                                          std::pair(20, 20)));
  EXPECT_EQ(g_host.percents.back(), 100.0F);
  EXPECT_EQ(clock.SleptMs(), 400);
}

// The machine IDs that docs/protocol.md has, and those of their form that it has not.
TEST_F(JobTest, MachineIdDecidesFamilyAndBufferQuery) {
  const std::map<std::string, PrinterFamily> families = {
      {"Zafel Superfine", PrinterFamily::kZafelSuperfine},
      {"BEGO", PrinterFamily::kBego},
      {"Android", PrinterFamily::kAndroid},
      {"", PrinterFamily::kUnknown}};
  std::map<std::string, ProtocolPage::Row> known;
  for (const auto& row : ProtocolPage::Rows("Model")) {
    for (const std::string& id : ProtocolPage::Quoted(row["Machine IDs"])) known[id] = row;
  }
  printer.Always("F503", "F503 OK S:7");
  HasFreeBuffer(7);
  for (const char machine : std::string("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZc")) {
    const std::string id = std::string("3DPSNKG") + machine + "3WTW00001";
    const std::string family = known[id]["Family"];
    EXPECT_EQ(FamilyOf(id), families.at(family)) << known[id].Where() << id;
    EXPECT_EQ(QueryFreeBufferSize(Context(), id), 7U) << known[id].Where() << id;
    EXPECT_EQ(printer.Wire().back(), family == "Android" ? "F503\r\n" : "F117\r\n")
        << known[id].Where() << id;
    known.erase(id);
  }
  EXPECT_TRUE(known.empty()) << known.begin()->second.Where() << known.begin()->first;
  EXPECT_EQ(FamilyOf(""), PrinterFamily::kUnknown);
  HasFreeBuffer(-5);
  EXPECT_EQ(QueryFreeBufferSize(Context(), kZafelId), 0U);
}

}  // namespace
}  // namespace Nuv::Connect
