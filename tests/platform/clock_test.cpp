// The system's clock, without handles, and a limit on any clock.
#include "platform/clock.h"

#include <gtest/gtest.h>

#include "platform/waiter.h"
#include "tests/support/virtual_clock.h"

namespace Nuv::Platform {
namespace {

TEST(SystemClockTest, SleepsAtLeastAsLongAsAsked) {
  constexpr std::chrono::milliseconds kShort(1);
  const Deadline before = SystemClock().Now();
  SystemClock().SleepFor(kShort);
  EXPECT_GE(SystemClock().Now() - before, kShort);
}

TEST(TimeLimitTest, LetsAWaitLastUntilItsEnd) {
  VirtualClock clock;
  const TimeLimit limit(clock, std::chrono::milliseconds(50));
  EXPECT_EQ(limit.Patience(), std::chrono::milliseconds(50));
  EXPECT_FALSE(limit.Raised());
  clock.SleepFor(std::chrono::milliseconds(60));
  EXPECT_TRUE(limit.Raised());
  EXPECT_GT(limit.Patience(), std::chrono::milliseconds(0)) << "asks again, and does not spin";
}

}  // namespace
}  // namespace Nuv::Platform
