// Searches take turns. Another program's is played by a lock of the test's own, which the library's
// does not tell from one.

#include "transport/search_turn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/support/manual_clock.h"
#include "tests/support/told.h"
#include "transport/network_device_searcher.h"

using namespace Nuv::Transport;

namespace {

using ::testing::HasSubstr;

constexpr uint16_t kPort = 6998;
constexpr int kTimeLimitMs = 5000;

// How long a turn was waited for, by a clock on which that takes no time.
int64_t WaitedMs(uint16_t port = kPort) {
  ManualClock clock;
  std::thread([&] { const SearchTurn turn(port, kTimeLimitMs, clock); }).join();
  return clock.SleptMs();
}

TEST(SearchTurnTest, WaitsForAnotherProgramsAsLongAsASearchMayLast) {
  const int64_t longest = NetworkDeviceSearcher::Longest(kTimeLimitMs).count();
  EXPECT_GE(longest, 10 * kTimeLimitMs);
  EXPECT_EQ(WaitedMs(), 0);
  QLockFile others(SearchLockFile(kPort));
  ASSERT_TRUE(others.tryLock(0)) << "the turn before has ended";
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(WaitedMs(), longest); }), HasSubstr("answers may get lost"));
  EXPECT_EQ(WaitedMs(kPort + 1), 0) << "another port";
  others.unlock();
  const SearchTurn turn(kPort, kTimeLimitMs);
  EXPECT_FALSE(others.tryLock(0)) << "others see it";
}

TEST(SearchTurnTest, WaitsForThisProgramsOwnOnAnyPort) {
  const SearchTurn turn(kPort, kTimeLimitMs);
  EXPECT_GT(WaitedMs(kPort + 1), 0) << "the lock file is another";
}

}  // namespace
