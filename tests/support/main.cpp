// The main function of all test programs: GoogleTest's, and a watchdog, so that a test that hangs
// is named at once instead of when the time of the whole program is up; no test leaves a socket
// open.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>

#include "tests/support/open_sockets.h"

namespace {

constexpr int kUsualSeconds = 60;
constexpr int kHangs = 3;  // exit status

// Ends the program when one test takes longer than NUV_TEST_SECONDS; 0: never, for a debugger.
class Watchdog : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& test) override {
    if (limit_.count() == 0) return;
    ended_ = {};
    thread_ = std::thread([name = std::string(test.test_suite_name()) + '.' + test.name(),
                           limit = limit_, ended = ended_.get_future()] {
      if (ended.wait_for(limit) == std::future_status::ready) return;
      std::fprintf(stderr, "HANGS: %s, for longer than %d s\n", name.c_str(),
                   static_cast<int>(limit.count()));
      std::fflush(stdout);
      std::_Exit(kHangs);
    });
  }
  void OnTestEnd(const testing::TestInfo&) override {
    if (!thread_.joinable()) return;
    ended_.set_value();
    thread_.join();
  }

  static std::chrono::seconds Limit() {
    const char* const seconds = std::getenv("NUV_TEST_SECONDS");
    return std::chrono::seconds(seconds == nullptr ? kUsualSeconds : std::atoi(seconds));
  }

  const std::chrono::seconds limit_ = Limit();
  std::promise<void> ended_;  // of the test that runs
  std::thread thread_;
};

class NoSocketStaysOpen : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { before_ = OpenSockets(); }
  void OnTestEnd(const testing::TestInfo&) override {
    for (const int socket : OpenSockets()) {
      EXPECT_EQ(before_.count(socket), 1U) << "socket " << socket << " was left open";
    }
  }

  std::set<int> before_;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new Watchdog);  // which owns it
  testing::UnitTest::GetInstance()->listeners().Append(new NoSocketStaysOpen);
  return RUN_ALL_TESTS();
}
