// The status thread, the host's threads and callbacks that call back, against a simulated printer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <atomic>
#include <future>
#include <thread>

#include "tests/connect/job_lab.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;

// Sleeps take no time; a wait of the status thread takes a millisecond for an hour.
class HurriedClock final : public Platform::Clock {
 public:
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

class ThreadsTest : public JobLab {
 protected:
  void SetUp() override {
    JobLab::SetUp();
    if (IsSkipped()) return;
    g_told = 0;
    g_updates = 0;
    g_statusInCallback = -1;
    g_onPrintingInfo = nullptr;
    auto printer = Printer("A1");
    printer.layerTime = std::chrono::hours(1);  // a job that is sent stays in print
    Start({printer});
    Connect();
    for (int i = 0; i < 50; ++i) lines.push_back("G1 X" + std::to_string(i));
    WritePrintFile();
  }
  void TearDown() override {
    g_host.reset();
    g_onPrintingInfo = nullptr;
  }

  // A new framework in place of an earlier one, connected.
  void Connect(int replyTimeoutMs = kReplyTimeoutMs) {
    g_host = std::make_unique<ConnectingFramework>(g_clock, replyTimeoutMs);
    serials.clear();
    ListAll(*g_host);
    ASSERT_EQ(g_host->ChooseDevice(NUV_KIND_NETWORK, 0), NUV_OK);
  }
  // Until the host has been told of a print so often; the status thread asks all the time.
  void AwaitTold(int times) {
    EXPECT_TRUE(Becomes([times] { return g_told >= times; }));
  }
  int Send() { return g_host->SendPrintFile(path.wstring(), nullptr); }

  // The state, asked of the printer; below 0 when it did not answer.
  static int Status() {
    int status = -1;
    return g_host->GetPrinterStatus(&status) == NUV_OK ? status : -1;
  }
  void Poll() {
    ++polls;
    EXPECT_GE(Status(), 0);
  }
  // Replaces the callbacks again and again until `stop`.
  static void ReplaceCallbacks(const std::atomic<bool>& stop) {
    while (!stop) {
      EXPECT_EQ(g_host->RegisterSendDataUpdateCallback([](int, int) { ++g_updates; }), NUV_OK);
      EXPECT_EQ(g_host->RegisterSendDataStartCallback([] {}), NUV_OK);
      g_host->RegisterErrorCodeCallback(nullptr);
      g_host->RegisterSendDataStartCallback(nullptr);
      EXPECT_EQ(g_host->RegisterErrorCodeCallback([](int, int) {}), NUV_OK);
      std::this_thread::yield();
    }
  }

  // Jobs by one thread, each until the host has been told of it, and callbacks replaced by another,
  // while `polling`, which is given whether the jobs are done, runs in this one.
  template <class Polling>
  void RunsWithJobs(Polling polling) {
    ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
    std::atomic<bool> done{false};
    std::thread jobs([&] {
      for (int job = 0; job < kJobs; ++job) {
        simulator->SetIdle(0);
        EXPECT_EQ(Send(), NUV_OK);
        ExpectJobArrived();
        AwaitTold(g_told + 1);
      }
      done = true;
    });
    std::thread replacing([&] { ReplaceCallbacks(done); });
    polling(done);
    jobs.join();
    replacing.join();
    EXPECT_GT(g_updates, 0);
  }

  static constexpr int kPolls = 3000;
  static constexpr int kJobs = 10;
  int polls = 0;
};

TEST_F(ThreadsTest, PollingStatusThreadAndJobsAtOnce) {
  RunsWithJobs([this](const std::atomic<bool>& done) {
    while (polls < kPolls || !done) Poll();
  });
}

TEST_F(ThreadsTest, TheSameInsideAnEventLoop) {
  int argc = 1;
  char name[] = "host";
  char* argv[] = {name, nullptr};
  QCoreApplication app(argc, argv);
  RunsWithJobs([&](const std::atomic<bool>& done) {
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
      Poll();
      if (polls >= kPolls && done) app.quit();
    });
    timer.start(0);
    app.exec();
  });
}

// Callbacks.h tells what each callback may call; none of it may deadlock.
TEST_F(ThreadsTest, SendCallbacksMayQuery) {
  g_host->RegisterSendDataStartCallback([] { EXPECT_NE(Status(), -1); });
  g_host->RegisterSendDataUpdateCallback([](int, int) {
    g_statusInCallback = Status();
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
  EXPECT_TRUE(Becomes([&] { return simulator->Totals().jobsAccepted == 1; }));
  EXPECT_NE(g_statusInCallback, -1);
}

TEST_F(ThreadsTest, ErrorCallbackMayQuery) {
  g_host->RegisterErrorCodeCallback([](int result, int code) {
    EXPECT_EQ(std::pair(result, code), std::pair(29, 319));
    g_statusInCallback = Status();
  });
  std::map<std::string, std::string> reply;
  EXPECT_EQ(g_host->ExecuteCommand(319, {"1"}, reply), NUV_PRINTER_REFUSED);
  EXPECT_EQ(g_statusInCallback, NUV_PRINTER_IDLE);
}

TEST_F(ThreadsTest, PrintingInfoCallbackMayQueryAndSendAndClose) {
  ASSERT_EQ(Send(), NUV_OK);
  std::promise<void> closed;
  g_onPrintingInfo = [&] {
    g_statusInCallback = Status();
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

// Waiting for the hour would end the test program by its time limit.
TEST_F(ThreadsTest, ClosingGivesUpTheReplyOfASilentPrinter) {
  constexpr int kHourMs = 3600000;
  Connect(kHourMs);
  Commits("silent,code=101,count=-1");
  const auto asked = simulator->Totals().requests;
  ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
  ASSERT_TRUE(Becomes([&] { return simulator->Totals().requests > asked; }));
  g_host.reset();
  EXPECT_EQ(g_told, 0);
}

// Several short lives, each closed at a moment of its own.
TEST_F(ThreadsTest, ClosingAtAnyMomentEndsTheThread) {
  ASSERT_EQ(Send(), NUV_OK);
  for (int life = 0; life < 8; ++life) {
    g_told = 0;
    ASSERT_EQ(g_host->RegisterPrintingInfoCallback(OnPrintingInfo, 1000), NUV_OK);
    AwaitTold(life);
    Connect();
  }
}

}  // namespace
}  // namespace Nuv::Connect
