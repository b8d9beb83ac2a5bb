// Whole jobs: print file, library, wire, simulator; byte for byte.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/connect/job_lab.h"

namespace Nuv::Connect {
namespace {

class JobsTest : public JobLab {
 protected:
  void SetUp() override {
    JobLab::SetUp();
    if (IsSkipped()) return;
    for (int i = 0; i < 40; ++i) {
      lines.push_back("L" + std::to_string(i) + std::string(static_cast<size_t>(i % 7), 'x'));
    }
    WritePrintFile();
  }
};

TEST_F(JobsTest, ArrivesByteForByteThroughASmallBuffer) {
  // Half a dozen lines fill the buffer, so the job waits, asks and reopens again and again.
  auto printer = Printer("A1");
  printer.bufferBytes = 64;
  printer.drainRate = 20000;
  StartConnected(printer);
  ASSERT_EQ(Send(), NUV_OK);
  ExpectJobArrived();
  EXPECT_EQ(simulator->Totals().overruns, 0U);
  EXPECT_GT(simulator->Totals().connections, 5U);
  EXPECT_TRUE(Becomes([&] { return simulator->Totals().jobsFinished == 1; }));
  EXPECT_EQ(clock.SleptMs() % 100, 0);
}

// The host cancels before the first line, in the middle, and behind the last one.
TEST_F(JobsTest, CancelledJobIsAbandonedOnThePrinter) {
  auto printer = Printer("A1");
  printer.layerTime = std::chrono::hours(1);
  StartConnected(printer);
  for (const size_t sent : {size_t{0}, size_t{17}, lines.size()}) {
    SCOPED_TRACE(sent);
    CancelsFrom(static_cast<int>(sent));
    EXPECT_EQ(Send(), NUV_OK);
    const uint64_t jobs = simulator->Totals().jobsAccepted;
    EXPECT_TRUE(Becomes([&] { return simulator->Totals().jobsAbandoned == jobs; }));
    EXPECT_EQ(simulator->JobBytes(), Wire(sent));
    EXPECT_EQ(simulator->Requests().back(), "F104 S2");
    EXPECT_EQ(simulator->Status().state, NuvSim::State::kIdle);
  }
}

TEST_F(JobsTest, FilesThatAreNoJob) {
  StartConnected(Printer("A1"));
  WritePrintFile("3DPSNKGA3WTW00001");
  EXPECT_EQ(Send(), NUV_NO_JOB_SENDER);
  WritePrintFile();
  std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(-1, std::ios::end)
      << '!';
  EXPECT_EQ(Send(), NUV_FILE_NOT_READABLE) << "damaged";
  std::filesystem::resize_file(path, 20);
  EXPECT_EQ(Send(), NUV_FILE_NOT_READABLE) << "cut short";
  SetEnvironment("NUVFILE_LIBRARY", "/nowhere/libNuvFile.so");
  ConnectingFramework other(clock, kReplyTimeoutMs);
  EXPECT_EQ(other.SendPrintFile(path.wstring(), nullptr), NUV_NUVFILE_MISSING);
  EXPECT_EQ(simulator->Totals().requests, 2U) << "only the listing's";
}

TEST_F(JobsTest, CommandTextArrivesLineByLine) {
  StartConnected(Printer("A1"));
  std::ofstream(path) << "G28\nG1 X1 Y2\n\nM104\n";
  EXPECT_EQ(framework.SendGCodeFile(path.wstring(), nullptr), NUV_OK);
  const std::string expected = "G28\r\nG1 X1 Y2\r\nM104\r\n";
  EXPECT_TRUE(Becomes([&] { return simulator->CommandText() == expected; }));
}

TEST_F(JobsTest, NonAsciiPathIsFound) {
  const auto renamed = std::filesystem::u8path(::testing::TempDir() + "Zahnkr\xc3\xb6ne.nuv");
  std::filesystem::rename(path, renamed);
  StartConnected(Printer("A1"));
  const std::string folder = ::testing::TempDir();
  const std::wstring wide = std::wstring(folder.begin(), folder.end()) + L"Zahnkr\u00f6ne.nuv";
  EXPECT_EQ(framework.SendPrintFile(wide, nullptr), NUV_OK);
  const std::wstring noCharacter(1, static_cast<wchar_t>(0xD800));
  EXPECT_EQ(framework.SendPrintFile(noCharacter, nullptr), NUV_FILE_NOT_READABLE);
}

}  // namespace
}  // namespace Nuv::Connect
