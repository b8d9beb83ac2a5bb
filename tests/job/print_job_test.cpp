// What a job puts on the wire, and how it ends, on a clock that costs no time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "job/free_buffer.h"
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

// How a job ends before its data is through.
TEST_F(JobTest, FailuresEndInTheirCode) {
  struct Row {
    const char* name;
    std::function<void(JobTest&)> fault;
    int32_t result;
    const char* data;
    int closes;
  };
  const Row rows[] = {
      {"no NuvFile", [](JobTest& t) { t.files.available = false; }, NUV_NUVFILE_MISSING, "", 0},
      {"refused file", [](JobTest& t) { t.files.accepts = false; }, NUV_FILE_NOT_READABLE, "", 0},
      {"no sender", [](JobTest& t) { t.files.machineId = "3DPSNKGA3WTW00001"; }, NUV_NO_JOB_SENDER,
       "", 1},
      {"opening unanswered", [](JobTest& t) { t.printer.Always("F103", ""); }, NUV_FAILED, "", 0},
      {"no buffer at the opening", [](JobTest& t) { t.HasFreeBuffer(0); }, NUV_NO_BUFFER_SPACE, "",
       0},
      {"write fails", [](JobTest& t) { t.printer.writesUntilFailure = 1; }, NUV_WRITE_FAILED,
       "one\r\n", 1},
      {"damaged line", [](JobTest& t) { t.files.unreadable = 1; }, NUV_FILE_NOT_READABLE, "one\r\n",
       1},
      {"lost while waiting",
       [](JobTest& t) {
         t.HasFreeBuffer(4);
         t.printer.opens = false;
       },
       NUV_NO_BUFFER_SPACE, "", 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    files = FakePrintFiles();
    SetUp();
    files.lines = {"one", "two"};
    row.fault(*this);
    EXPECT_EQ(Send(), row.result);
    EXPECT_EQ(printer.Data(), row.data);
    EXPECT_EQ(files.closes, row.closes);
    EXPECT_EQ(state.linkFree, true);
    for (const std::string& sent : printer.Wire()) EXPECT_NE(sent, "F104 S2\r\n");
  }
}

TEST_F(JobTest, MissingFileIsNotLoaded) {
  std::filesystem::remove(path);
  EXPECT_EQ(Send(), NUV_FILE_NOT_READABLE);
  EXPECT_EQ(SendCommands(), NUV_FILE_NOT_READABLE);
  EXPECT_EQ(files.loads, 0);
  EXPECT_TRUE(printer.Wire().empty());
}

// A cancel stops before the next line, and the printer is told; what was sent stays sent.
TEST_F(JobTest, CancelledJobIsAbandoned) {
  struct Row {
    int cancelFrom;
    const char* data;
  };
  // The last row cancels at the final question, behind the last line.
  for (const Row& row : {Row{0, ""}, Row{1, "one\r\n"}, Row{3, "one\r\ntwo\r\nthree\r\n"}}) {
    SCOPED_TRACE(row.cancelFrom);
    printer = ScriptedChannel();
    SetUp();
    files.lines = {"one", "two", "three"};
    g_host.cancelFrom = row.cancelFrom;
    EXPECT_EQ(Send(), NUV_OK);
    EXPECT_EQ(printer.Data(), row.data);
    EXPECT_EQ(printer.Wire().back(), "F104 S2\r\n");
  }
}

TEST_F(JobTest, EmptyModelSendsNothingButAsksOnce) {
  g_host.cancelFrom = 1000;
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(printer.Blocks(), 0U);
  EXPECT_EQ(g_host.asked, 1);
  EXPECT_EQ(g_host.starts, 1);
}

TEST_F(JobTest, MalformedBufferFigureLeavesTheLinkFree) {
  files.lines = {"one"};
  printer.Replies({"F102 OK S:0", "F103 OK", "F117 OK S:99", "F117 OK S:abc"});
  EXPECT_THROW(Send(), std::invalid_argument);
  EXPECT_EQ(files.closes, 1);
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
  EXPECT_EQ(files.loads, 0);
}

TEST_F(JobTest, CommandTextFailuresAndCancel) {
  struct Row {
    const char* name;
    std::function<void(JobTest&)> fault;
    int32_t result;
    const char* data;
  };
  const Row rows[] = {
      {"empty file", [](JobTest& t) { t.WriteFile(""); }, NUV_OK, ""},
      {"a folder", [](JobTest& t) { t.path = ::testing::TempDir(); }, NUV_FILE_NOT_READABLE, ""},
      {"cancelled", [](JobTest&) { g_host.cancelFrom = 1; }, NUV_OK, "G28\r\n"},
      {"write fails", [](JobTest& t) { t.printer.writesUntilFailure = 0; }, NUV_WRITE_FAILED, ""},
      // Line ends are not counted: three free bytes take a line of three.
      {"fits exactly, then lost",
       [](JobTest& t) {
         t.HasFreeBuffer(3);
         t.printer.opens = false;
       },
       NUV_NO_BUFFER_SPACE, "G28\r\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    SetUp();
    WriteFile("G28\nG29\n");
    row.fault(*this);
    EXPECT_EQ(SendCommands(), row.result);
    EXPECT_EQ(printer.Data(), row.data);
    for (const std::string& sent : printer.Wire()) EXPECT_NE(sent, "F104 S2\r\n");
  }
}

TEST_F(JobTest, MachineIdDecidesFamilyAndBufferQuery) {
  struct Row {
    const char* id;
    PrinterFamily family;
    const char* query;
  };
  const Row rows[] = {
      {"3DPSNKG23WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKG13WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKG33WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKG53WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKG73WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKG83WTW00001", PrinterFamily::kZafelSuperfine, "F117\r\n"},
      {"3DPSNKGB3WTW00001", PrinterFamily::kBego, "F117\r\n"},
      {"3DPSNKG43WTW00001", PrinterFamily::kAndroid, "F503\r\n"},
      {"3DPSNKG93WTW00001", PrinterFamily::kAndroid, "F503\r\n"},
      {"3DPSNKGC3WTW00001", PrinterFamily::kAndroid, "F503\r\n"},
      {"3DPSNKGA3WTW00001", PrinterFamily::kUnknown, "F117\r\n"},
      {"3dpsnkg23wtw00001", PrinterFamily::kUnknown, "F117\r\n"},
      {"", PrinterFamily::kUnknown, "F117\r\n"},
  };
  printer.Always("F503", "F503 OK S:7");
  HasFreeBuffer(7);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.id);
    EXPECT_EQ(FamilyOf(row.id), row.family);
    EXPECT_EQ(QueryFreeBufferSize(Context(), row.id), 7U);
    EXPECT_EQ(printer.Wire().back(), row.query);
  }
  HasFreeBuffer(-5);
  EXPECT_EQ(QueryFreeBufferSize(Context(), kZafelId), 0U);
}

}  // namespace
}  // namespace Nuv::Connect
