// The status thread on a clock that the test advances: what it asks, when, and how it ends.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "job/print_status_handler.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/job/job_fixture.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kExitLine[] = "PrintStatusCallBackHandler exit ...\n";

// What the host was told; written by the status thread, read while it sleeps.
std::vector<std::string> g_told;
std::function<void()> g_inCallback;

void Told(int totalLayers, int layer, int totalMinutes, std::string jobText, int minutesLeft,
          std::string stateText, std::string controller) {
  g_told.push_back(std::to_string(totalLayers) + "," + std::to_string(layer) + "," +
                   std::to_string(totalMinutes) + "," + jobText + "," +
                   std::to_string(minutesLeft) + "," + stateText + "," + controller);
  if (g_inCallback) g_inCallback();
}

class StatusHandlerTest : public ::testing::Test {
 public:
  void SetUp() override {
    g_told.clear();
    g_inCallback = nullptr;
    Answers("F101 OK V:1 N:x M:y S:1 C:2.0 L:3 T:44 R:exposing", "F107 OK L:300 T:50 R:crown");
    handler = std::make_unique<PrintStatusHandler>(channel, state, clock);
  }
  void TearDown() override { g_inCallback = nullptr; }

  void Answers(const std::string& identity, const std::string& totals) {
    channel->Always("F101", identity);
    channel->Always("F107", totals);
  }
  void Start(uint32_t intervalMs = 1000) {
    ASSERT_TRUE(handler->Start(Told, intervalMs));
    waits = 1;
    clock.AwaitWait(waits);
  }
  // Starts; the printer keeps its first answer back until `answer` is set.
  void StartAsking() {
    channel->onExecute = [this, first = true]() mutable {
      if (!std::exchange(first, false)) return;
      asked.set_value();
      answer.get_future().wait();
    };
    Start();
    clock.Advance(milliseconds(1000));
    asked.get_future().wait();
  }
  // Lets the thread make one pass, with so many pauses before another try.
  void Pass(int pauses = 0) {
    for (int i = 0; i <= pauses; ++i) {
      clock.Advance(milliseconds(clock.AwaitWait(waits)));
      clock.AwaitWait(++waits);
    }
  }
  // Ends the thread; what it wrote to standard output.
  std::string Close() {
    ::testing::internal::CaptureStdout();
    handler.reset();
    return ::testing::internal::GetCapturedStdout();
  }

  ManualClock clock;
  std::shared_ptr<ScriptedChannel> channel = std::make_shared<ScriptedChannel>();
  std::shared_ptr<JobState> state = std::make_shared<JobState>();
  std::unique_ptr<PrintStatusHandler> handler;
  FakePrintFiles files;
  HostCallbacks callbacks;
  const JobContext context{*channel, clock, files, callbacks, *state};
  size_t waits = 0;
  std::promise<void> asked;
  std::promise<void> answer;
};

TEST_F(StatusHandlerTest, TellsTheHostOfARunningPrint) {
  Start();
  EXPECT_THAT(channel->Wire(), IsEmpty()) << "sleeps first";
  Pass();
  EXPECT_THAT(channel->Wire(), ElementsAre("<open>", "F101\r\n", "F107\r\n"));
  EXPECT_THAT(g_told, ElementsAre("300,3,50,crown,44,exposing,2.0"));
  // The serial number has the same key as the state; text that is missing is empty.
  Answers("F101 OK S:SIM1 C:2 S:1 L:4 T:43", "F107 OK L:300");
  Pass();
  EXPECT_EQ(g_told.back(), "300,4,0,,43,,2");
  EXPECT_EQ(Close(), kExitLine);
}

TEST_F(StatusHandlerTest, IntervalIsAtLeastASecond) {
  for (const auto& [given, kept] :
       {std::pair(0U, 1000), {500U, 1000}, {1000U, 1000}, {2500U, 2500}}) {
    SCOPED_TRACE(given);
    ManualClock own;
    PrintStatusHandler each(channel, std::make_shared<JobState>(), own);
    EXPECT_TRUE(each.Start(Told, given));
    EXPECT_EQ(own.AwaitWait(1), kept);
    own.Advance(milliseconds(kept));
    EXPECT_EQ(own.AwaitWait(2), kept);
  }
}

TEST_F(StatusHandlerTest, LaterRegistrationsChangeNothing) {
  EXPECT_TRUE(handler->Start(nullptr, 5000)) << "no callback, no thread";
  Start(2000);
  EXPECT_TRUE(handler->Start([](int, int, int, std::string, int, std::string,
                                std::string) { ADD_FAILURE() << "the first one stays"; },
                             1000));
  Pass();
  EXPECT_EQ(clock.AwaitWait(waits), 2000);
  EXPECT_EQ(g_told.size(), 1U);
  EXPECT_FALSE(state->statusThread.try_lock()) << "held for the thread's life";
  Close();
  EXPECT_TRUE(state->statusThread.try_lock());
  state->statusThread.unlock();
}

// What the printer answers, and how far a pass gets.
TEST_F(StatusHandlerTest, PassesThatTellNothing) {
  const char* const totals = "F107 OK L:300 T:50";
  const struct {
    const char* identity;
    const char* totals;
    size_t requests;
    int pauses = 0;
  } kRows[] = {
      {"F101 OK S:0 L:3 T:4", totals, 1},
      {"F101 OK S:11 L:3 T:4", totals, 1},
      {"F101 OK L:3 T:4", totals, 1},
      {"F101 NG S:1 L:3 T:4", totals, 1},
      {"F101 OK S:1 L:x T:4", totals, 1},
      {"F101 OK S:1 L:3 T:99999999999", totals, 1},
      {"F101 OK S:1 T:4", totals, 1},
      {"Fxyz OK", totals, 1},
      {"", totals, 3, 2},
      {"F101 OK S:1 L:3 T:4", "F107 NG", 2},
      {"F101 OK S:1 L:3 T:4", "", 4, 2},
      {"F101 OK S:1 L:3 T:4", "F107 OK L:x", 2},
  };
  Start();
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.identity) + " / " + row.totals);
    Answers(row.identity, row.totals);
    const size_t before = channel->Wire().size();
    Pass(row.pauses);
    EXPECT_EQ(channel->Wire().size() - before, row.requests + 1) << "and the opening";
  }
  EXPECT_THAT(g_told, IsEmpty());
  Answers("F101 OK S:1 L:3 T:4", totals);
  Pass();
  EXPECT_EQ(g_told.size(), 1U) << "the thread goes on";
}

TEST_F(StatusHandlerTest, SendsNothingWhileTheLinkIsTaken) {
  Start();
  {
    const LinkClaim claim(context, JobKind::kLines);
    EXPECT_EQ(channel->job, JobKind::kLines);
    Pass();
    Pass();
  }
  channel->opens = false;
  Pass();
  EXPECT_THAT(channel->Wire(), ElementsAre("<open>"));
  channel->opens = true;
  // A printer that waits for an image would take the query for a part of it.
  state->quietUntil = clock.Now() + milliseconds(1500);
  Pass();
  EXPECT_EQ(channel->Wire().size(), 1U);
  Pass();
  EXPECT_EQ(g_told.size(), 1U);
}

TEST_F(StatusHandlerTest, TransferWaitsForTheQueriesUnderWay) {
  StartAsking();
  size_t wireAtClaim = 0;
  std::thread job([&] {
    const LinkClaim claim(context, JobKind::kLines);
    wireAtClaim = channel->Wire().size();
  });
  while (state->linkFree) std::this_thread::yield();
  answer.set_value();
  job.join();
  EXPECT_EQ(wireAtClaim, 3U) << "opening, 101, 107";
  clock.AwaitWait(++waits);
}

TEST_F(StatusHandlerTest, ThrowingCallbackEndsItsPassOnly) {
  Start();
  g_inCallback = [] { throw std::runtime_error("host"); };
  EXPECT_THAT(ToldBy([&] { Pass(); }), ::testing::HasSubstr("status thread: host\n"));
  g_inCallback = [] { throw 1; };
  EXPECT_THAT(ToldBy([&] { Pass(); }), ::testing::HasSubstr("callback threw\n"));
  EXPECT_EQ(g_told.size(), 2U);
  EXPECT_EQ(Close(), kExitLine);
}

TEST_F(StatusHandlerTest, ClosingEndsTheSleepAtOnce) {
  Start(3600000);
  EXPECT_EQ(Close(), kExitLine) << "without any advance of the clock";
  EXPECT_THAT(channel->Wire(), IsEmpty());
}

TEST_F(StatusHandlerTest, ClosingEndsThePauseBeforeAnotherTry) {
  Answers("", "");
  Start();
  clock.Advance(milliseconds(1000));
  clock.AwaitWait(2);
  EXPECT_EQ(Close(), kExitLine);
  EXPECT_THAT(channel->Wire(), ElementsAre("<open>", "F101\r\n")) << "not asked again";
}

TEST_F(StatusHandlerTest, ClosingInATransactionWaitsForItAndTellsNothing) {
  StartAsking();
  ::testing::internal::CaptureStdout();
  state->closing.Raise();
  answer.set_value();
  handler.reset();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), kExitLine);
  EXPECT_THAT(channel->Wire(), ElementsAre("<open>", "F101\r\n"));
  EXPECT_THAT(g_told, IsEmpty());
}

}  // namespace
}  // namespace Nuv::Connect
