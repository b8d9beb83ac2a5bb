// Waiting for a handle on the system's clock.

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "platform/waiter.h"

namespace Nuv::Platform {
namespace {

class ClockTest : public ::testing::Test {
 protected:
  ClockTest() { EXPECT_EQ(pipe(ends), 0); }
  ~ClockTest() override {
    for (const int end : ends) close(end);
  }
  WaitEnd Wait(int end, Readiness readiness, std::chrono::milliseconds duration) {
    return clock.WaitReady(end, readiness, clock.Now() + duration, {&channel, &call});
  }

  static constexpr std::chrono::hours kLong{1};
  static constexpr std::chrono::milliseconds kShort{1};

  int ends[2] = {-1, -1};
  Clock& clock = SystemClock();
  Interrupt channel;
  Interrupt call;
};

TEST_F(ClockTest, WaitsUntilAHandleIsReadyOrItsOtherSideEnds) {
  EXPECT_EQ(Wait(ends[0], Readiness::kInput, kShort), WaitEnd::kTimeout);
  EXPECT_EQ(Wait(ends[0], Readiness::kInput, -kLong), WaitEnd::kTimeout);
  EXPECT_EQ(Wait(ends[1], Readiness::kOutput, kLong), WaitEnd::kReady);
  std::thread writer([&] { EXPECT_EQ(write(ends[1], "x", 1), 1); });
  EXPECT_EQ(Wait(ends[0], Readiness::kInput, kLong), WaitEnd::kReady);
  writer.join();
  EXPECT_EQ(Wait(ends[0], Readiness::kInput, -kLong), WaitEnd::kReady) << "it looks once";
  close(ends[0]);
  ends[0] = -1;
  EXPECT_EQ(Wait(ends[1], Readiness::kInput, kLong), WaitEnd::kReady);
}

// The hour would end the test program by its time limit.
TEST_F(ClockTest, EitherInterruptEndsTheWait) {
  for (Interrupt* const interrupt : {&call, &channel}) {
    std::thread raises([&] { interrupt->Raise(); });
    EXPECT_EQ(Wait(ends[0], Readiness::kInput, kLong), WaitEnd::kInterrupted);
    raises.join();
  }
  EXPECT_EQ(Wait(ends[1], Readiness::kOutput, kLong), WaitEnd::kInterrupted)
      << "though it is ready";
}

TEST_F(ClockTest, AnInterruptOfACallEndsWithIt) {
  Waiter waiter;
  call.Raise();
  {
    const Waiter::Call under(waiter, &call);
    EXPECT_TRUE(waiter.Over());
    EXPECT_FALSE(waiter.Until(waiter.In(1), ends[1], Readiness::kOutput));
  }
  EXPECT_TRUE(waiter.Until(waiter.In(1), ends[1], Readiness::kOutput));
  waiter.GiveUp();
  EXPECT_FALSE(waiter.Until(waiter.In(1), ends[1], Readiness::kOutput));
}

}  // namespace
}  // namespace Nuv::Platform
