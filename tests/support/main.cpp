// The main function of all test programs: GoogleTest's, and a watchdog, so that a test that hangs
// is named at once instead of when the time of the whole program is up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace {

constexpr int kUsualSeconds = 60;
constexpr int kHangs = 3;  // exit status

// Ends the program when one test takes longer than NUV_TEST_SECONDS; 0: never, for a debugger.
class Watchdog : public testing::EmptyTestEventListener {
 private:
  using Clock = std::chrono::steady_clock;

  void OnTestProgramStart(const testing::UnitTest&) override {
    if (limit_.count() > 0) thread_ = std::thread([this] { Watch(); });
  }

  void OnTestStart(const testing::TestInfo& test) override {
    Set(std::string(test.test_suite_name()) + '.' + test.name());
  }

  void OnTestEnd(const testing::TestInfo&) override { Set(""); }

  void OnTestProgramEnd(const testing::UnitTest&) override {
    if (!thread_.joinable()) return;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ended_ = true;
    }
    changed_.notify_one();
    thread_.join();
  }

  void Set(const std::string& test) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      test_ = test;
      started_ = Clock::now();
    }
    changed_.notify_one();
  }

  void Watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!ended_) {
      if (test_.empty()) {
        changed_.wait(lock);
      } else if (Clock::now() < started_ + limit_) {
        changed_.wait_until(lock, started_ + limit_);
      } else {
        std::fprintf(stderr, "HANGS: %s, for longer than %d s\n", test_.c_str(),
                     static_cast<int>(limit_.count()));
        std::fflush(stdout);
        std::_Exit(kHangs);
      }
    }
  }

  static std::chrono::seconds Limit() {
    const char* const seconds = std::getenv("NUV_TEST_SECONDS");
    return std::chrono::seconds(seconds == nullptr ? kUsualSeconds : std::atoi(seconds));
  }

  const std::chrono::seconds limit_ = Limit();
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string test_;  // the one that runs, or empty
  Clock::time_point started_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new Watchdog);  // which owns it
  return RUN_ALL_TESTS();
}
