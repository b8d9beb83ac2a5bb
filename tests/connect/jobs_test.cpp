// Whole jobs: print file, library, wire, simulator; byte for byte.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/connect/job_lab.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

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

TEST_F(JobsTest, CancelledJobIsAbandonedOnThePrinter) {
  StartConnected(Printer("A1"));
  static int asked;
  asked = 0;
  framework.RegisterSendDataCancelCallback([] { return asked++ >= 17; });
  static int starts;
  starts = 0;
  EXPECT_EQ(framework.RegisterSendDataStartCallback([] { ++starts; }), NUV_OK);
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(starts, 1);
  EXPECT_TRUE(Becomes([&] { return simulator->Totals().jobsAbandoned == 1; }));
  EXPECT_EQ(simulator->JobBytes(), Wire(17));
  EXPECT_EQ(simulator->Status().state, NuvSim::State::kIdle);
}

TEST_F(JobsTest, FilesThatAreNoJob) {
  StartConnected(Printer("A1"));
  WritePrintFile("3DPSNKGA3WTW00001");
  EXPECT_EQ(Send(), NUV_NO_JOB_SENDER);
  WritePrintFile();
  std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(-1, std::ios::end)
      << '!';
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(Send(), NUV_FILE_NOT_READABLE) << "damaged"; }),
              AllOf(HasSubstr(" refused ("), Not(HasSubstr("no reason given"))));
  SetEnvironment("NUVFILE_LIBRARY", "/nowhere/libNuvFile.so");
  ConnectingFramework other(clock, kReplyTimeoutMs);
  EXPECT_THAT(
      ToldBy([&] { EXPECT_EQ(other.SendPrintFile(path.wstring(), nullptr), NUV_NUVFILE_MISSING); }),
      AllOf(HasSubstr("print-file library /nowhere/libNuvFile.so: "),
            HasSubstr("not loaded, looked for: /nowhere/libNuvFile.so\n")));
  EXPECT_EQ(simulator->Totals().requests, 2U) << "only the listing's";
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
