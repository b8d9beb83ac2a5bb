// The status thread, the host's threads and callbacks that call back, against a simulated printer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <thread>

#include "nuvfile/print_file_writer.h"
#include "tests/connect/lab.h"
#include "tests/support/environment.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;

// Sleeps take no time; a wait of the status thread takes a millisecond for an hour.
class HurriedClock final : public Platform::Clock {
 public:
  std::chrono::nanoseconds Now() const override { return Platform::SystemClock().Now(); }
  void SleepFor(milliseconds) override { std::this_thread::yield(); }
  bool WaitFor(milliseconds, Platform::Interrupt& interrupt) override {
    return interrupt.WaitFor(milliseconds(1));
  }
};

HurriedClock g_clock;

std::unique_ptr<ConnectingFramework> g_host;
std::atomic<int> g_told{0};
std::atomic<int> g_updates{0};
std::atomic<int> g_statusInCallback{-1};
std::function<void()> g_onPrintingInfo;

void OnPrintingInfo(int, int, int, std::string, int, std::string, std::string) {
  ++g_told;
  if (g_onPrintingInfo) g_onPrintingInfo();
}

class ThreadsTest : public Lab {
 protected:
  void SetUp() override {
    Lab::SetUp();
    if (IsSkipped()) return;
    SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
    g_told = 0;
    g_updates = 0;
    g_statusInCallback = -1;
    g_onPrintingInfo = nullptr;
    auto printer = Printer("A1");
    printer.layerTime = std::chrono::hours(1);  // a job that is sent stays in print
    Start({printer});
    Connect();
    path = std::filesystem::path(::testing::TempDir()) / "threads.nuv";
    for (int i = 0; i < 50; ++i) lines.push_back("G1 X" + std::to_string(i));
    nuvfile::PrintFileContents contents;
    contents.machine_id = "3DPSNKG53WTW00001";
    ASSERT_TRUE(nuvfile::WritePrintFile(path.string(), contents, nuvfile::LinesOf(lines)).ok());
  }
  void TearDown() override {
    g_host.reset();
    g_onPrintingInfo = nullptr;
  }

  // A new framework in place of an earlier one, connected.
  void Connect() {
    g_host.reset();
    g_host = std::make_unique<ConnectingFramework>(g_clock, kReplyTimeoutMs);
    ASSERT_EQ(g_host->GetDeviceList(NUV_KIND_NETWORK, serials, kSearchMs), NUV_OK);
    ASSERT_EQ(g_host->ChooseDevice(NUV_KIND_NETWORK, 0), NUV_OK);
  }
  int Send() { return g_host->SendPrintFile(path.wstring(), nullptr); }

  // Sends jobs, one printing after the other, until `count` are sent and the host has been told of
  // a print. Returns how many arrived whole.
  int SendJobs(int count) {
    std::string expected;
    for (const std::string& line : lines) expected += line + "\r\n";
    int whole = 0;
    for (int job = 0; job < count || g_told == 0; ++job) {
      simulator->SetIdle(0);
      if (Send() != NUV_OK) continue;
      const bool arrived =
          simulator->WaitUntil([&] { return simulator->JobBytes().size() >= expected.size(); },
                               std::chrono::seconds(10));
      if (arrived && simulator->JobBytes() == expected) ++whole;
      // In print for a moment, so that the status thread sees it.
      const int told = g_told;
      for (int i = 0; i < 50 && g_told == told; ++i) std::this_thread::sleep_for(milliseconds(1));
    }
    return whole;
  }
  bool Poll() {
    int status = -1;
    return g_host->GetPrinterStatus(&status) == NUV_OK && status >= 0;
  }
  // Replaces the callbacks again and again until `stop`.
  static void ReplaceCallbacks(const std::atomic<bool>& stop) {
    while (!stop) {
      g_host->RegisterSendDataUpdateCallback([](int, int) { ++g_updates; });
      g_host->RegisterSendDataStartCallback([] {});
      g_host->RegisterErrorCodeCallback(nullptr);
      g_host->RegisterSendDataStartCallback(nullptr);
      g_host->RegisterErrorCodeCallback([](int, int) {});
      std::this_thread::yield();
    }
  }

  static constexpr int kPolls = 3000;
  static constexpr int kJobs = 10;
  std::filesystem::path path;
  std::vector<std::string> lines;
};

TEST_F(ThreadsTest, PollingStatusThreadAndJobsAtOnce) {
  ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
  std::atomic<bool> stop{false};
  int failed = 0;
  int whole = 0;
  std::thread jobs([&] { whole = SendJobs(kJobs); });
  std::thread replacing([&] { ReplaceCallbacks(stop); });
  for (int i = 0; i < kPolls; ++i) failed += Poll() ? 0 : 1;
  jobs.join();
  stop = true;
  replacing.join();
  EXPECT_EQ(failed, 0);
  EXPECT_GE(whole, kJobs);
  EXPECT_GT(g_told, 0);
  EXPECT_GT(g_updates, 0);
}

TEST_F(ThreadsTest, TheSameInsideAnEventLoop) {
  int argc = 1;
  char name[] = "host";
  char* argv[] = {name, nullptr};
  QCoreApplication app(argc, argv);
  ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
  std::atomic<bool> jobsDone{false};
  int polls = 0;
  int failed = 0;
  int whole = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    failed += Poll() ? 0 : 1;
    if (++polls >= kPolls && jobsDone) app.quit();
  });
  timer.start(0);
  std::thread jobs([&] {
    whole = SendJobs(kJobs);
    jobsDone = true;
  });
  app.exec();
  jobs.join();
  EXPECT_EQ(failed, 0);
  EXPECT_GE(whole, kJobs);
  EXPECT_GT(g_told, 0);
}

// Callbacks.h tells what each callback may call; none of it may deadlock.
TEST_F(ThreadsTest, SendCallbacksMayQuery) {
  g_host->RegisterSendDataStartCallback([] {
    int status = -1;
    EXPECT_EQ(g_host->GetPrinterStatus(&status), NUV_OK);
  });
  g_host->RegisterSendDataUpdateCallback([](int, int) {
    int status = -1;
    EXPECT_EQ(g_host->GetPrinterStatus(&status), NUV_OK);
    g_statusInCallback = status;
    EXPECT_EQ(g_host->SendGCodeFile(L"x", nullptr), NUV_FAILED) << "one job at a time";
    g_host->RegisterErrorCodeCallback(nullptr);
  });
  g_host->RegisterSendDataCancelCallback([] {
    int layers = 0;
    int minutes = 0;
    EXPECT_EQ(g_host->GetTotalLayerAndTime(&layers, &minutes), NUV_OK);
    return false;
  });
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_TRUE(simulator->WaitUntil([&] { return simulator->Totals().jobsAccepted == 1; },
                                   std::chrono::seconds(10)));
  EXPECT_NE(g_statusInCallback, -1);
}

TEST_F(ThreadsTest, ErrorCallbackMayQuery) {
  g_host->RegisterErrorCodeCallback([](int result, int code) {
    EXPECT_EQ(std::pair(result, code), std::pair(29, 319));
    int status = -1;
    EXPECT_EQ(g_host->GetPrinterStatus(&status), NUV_OK);
    g_statusInCallback = status;
  });
  std::map<std::string, std::string> reply;
  EXPECT_EQ(g_host->ExecuteCommand(319, {"1"}, reply), NUV_PRINTER_REFUSED);
  EXPECT_EQ(g_statusInCallback, NUV_PRINTER_IDLE);
}

TEST_F(ThreadsTest, PrintingInfoCallbackMayQueryAndSendAndClose) {
  ASSERT_EQ(Send(), NUV_OK);
  std::promise<void> closed;
  g_onPrintingInfo = [&] {
    int status = -1;
    EXPECT_EQ(g_host->GetPrinterStatus(&status), NUV_OK);
    g_statusInCallback = status;
    EXPECT_EQ(g_host->SendGCodeFile(L"/nowhere/x", nullptr), NUV_FILE_NOT_READABLE);
    EXPECT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1), NUV_OK);
    // As API_Close does it.
    g_host->Close();
    g_host.reset();
    closed.set_value();
  };
  ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
  closed.get_future().wait();
  EXPECT_EQ(g_statusInCallback, NUV_PRINTER_PRINTING);
  EXPECT_EQ(g_told, 1);
}

// Several short lives, each closed at a moment of its own.
TEST_F(ThreadsTest, ClosingAtAnyMomentEndsTheThread) {
  ASSERT_EQ(Send(), NUV_OK);
  for (int life = 0; life < 8; ++life) {
    g_told = 0;
    ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
    while (g_told < life) std::this_thread::sleep_for(std::chrono::microseconds(137));
    Connect();
  }
}

}  // namespace
}  // namespace Nuv::Connect
