#ifndef NUV_TESTS_WATCHDOG_H_
#define NUV_TESTS_WATCHDOG_H_

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "platform/interrupt.h"

// Ends the program when the test that holds it hangs, and names the test.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds limit = std::chrono::seconds(90))
      : thread_([this, limit] {
          if (over_.WaitFor(limit)) return;
          const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
          std::fprintf(stderr, "%s.%s hangs\n", test.test_suite_name(), test.name());
          std::abort();
        }) {}
  ~Watchdog() {
    over_.Raise();
    thread_.join();
  }

 private:
  Nuv::Platform::Interrupt over_;
  std::thread thread_;
};

#endif  // NUV_TESTS_WATCHDOG_H_
