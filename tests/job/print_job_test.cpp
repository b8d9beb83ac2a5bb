// What a job puts on the wire, and how it ends, on a clock that costs no time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "job/free_buffer.h"
#include "job/host_call.h"
#include "job/machine_ids.h"
#include "tests/job/job_fixture.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;

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

struct EndRow {
  const char* name;
  Fault fault;
  int32_t result;
  const char* data;
  int closes = 0;          // of the print file
  bool abandoned = false;  // on the printer
};

class JobEndTest : public JobTest {
 public:
  void ExpectEnds(const std::vector<EndRow>& rows, int32_t (JobTest::*send)()) {
    for (const EndRow& row : rows) {
      SCOPED_TRACE(row.name);
      StartAnew();
      files.lines = {"one", "two"};
      WriteFile("G28\nG29\n");
      row.fault(*this);
      EXPECT_EQ((this->*send)(), row.result);
      EXPECT_EQ(printer.Data(), row.data);
      EXPECT_EQ(files.closes, row.closes);
      EXPECT_TRUE(state.linkFree);
      const Strings& wire = printer.Wire();
      EXPECT_EQ(std::count(wire.begin(), wire.end(), "F104 S2\r\n"), row.abandoned ? 1 : 0);
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
  ExpectEnds(
      {
          {"missing file", missing, NUV_FILE_NOT_READABLE, ""},
          {"no NuvFile", noLibrary, NUV_NUVFILE_MISSING, ""},
          {"refused file", refused, NUV_FILE_NOT_READABLE, ""},
          {"no sender", foreign, NUV_NO_JOB_SENDER, "", 1},
          {"opening unanswered", Silent("F103"), NUV_FAILED, ""},
          {"no buffer at the opening", FreeBuffer(0), NUV_NO_BUFFER_SPACE, ""},
          {"lost while waiting", LostWithFreeBuffer(4), NUV_NO_BUFFER_SPACE, "", 1},
          {"write fails", WritesFailAfter(1), NUV_WRITE_FAILED, "one\r\n", 1},
          {"damaged line", badLine, NUV_FILE_NOT_READABLE, "one\r\n", 1},
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
  ExpectEnds(
      {
          {"missing file", missing, NUV_FILE_NOT_READABLE, ""},
          {"a folder", folder, NUV_FILE_NOT_READABLE, ""},
          {"empty file", empty, NUV_OK, ""},
          {"cancelled", CancelledFrom(1), NUV_OK, "G28\r\n"},
          {"write fails", WritesFailAfter(0), NUV_WRITE_FAILED, ""},
          // Line ends are not counted: three free bytes take a line of three.
          {"fits exactly, then lost", LostWithFreeBuffer(3), NUV_NO_BUFFER_SPACE, "G28\r\n"},
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

TEST_F(JobTest, SecondJobMeanwhileIsRefused) {
  files.lines = {"one"};
  int32_t second = -1;
  printer.onExecute = [&] { second = SendCommands(); };
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(second, NUV_FAILED);
  EXPECT_EQ(printer.Data(), "one\r\n");
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

TEST_F(JobTest, MachineIdDecidesFamilyAndBufferQuery) {
  const struct {
    std::string models;  // the character of each in the middle of the ID
    PrinterFamily family;
    const char* query;
  } kRows[] = {
      {"213578", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"B", PrinterFamily::kBego, "F117\r\n"},
      {"49C", PrinterFamily::kAndroid, "F503\r\n"},
      {"A6c", PrinterFamily::kUnknown, "F117\r\n"},
  };
  printer.Always("F503", "F503 OK S:7");
  HasFreeBuffer(7);
  for (const auto& row : kRows) {
    for (const char model : row.models) {
      const std::string id = std::string("3DPSNKG") + model + "3WTW00001";
      EXPECT_EQ(FamilyOf(id), row.family) << id;
      EXPECT_EQ(QueryFreeBufferSize(Context(), id), 7U) << id;
      EXPECT_EQ(printer.Wire().back(), row.query) << id;
    }
  }
  EXPECT_EQ(FamilyOf(""), PrinterFamily::kUnknown);
  HasFreeBuffer(-5);
  EXPECT_EQ(QueryFreeBufferSize(Context(), kZafelId), 0U);
}

}  // namespace
}  // namespace Nuv::Connect
