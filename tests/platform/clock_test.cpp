// The system's clock, without handles.
#include "platform/clock.h"

#include <gtest/gtest.h>

namespace Nuv::Platform {
namespace {

TEST(SystemClockTest, SleepsAtLeastAsLongAsAsked) {
  constexpr std::chrono::milliseconds kShort(1);
  const Deadline before = SystemClock().Now();
  SystemClock().SleepFor(kShort);
  EXPECT_GE(SystemClock().Now() - before, kShort);
}

}  // namespace
}  // namespace Nuv::Platform
