// The lock file of searches in a temporary folder that everybody may write to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/support/environment.h"
#include "tests/support/manual_clock.h"
#include "tests/support/told.h"
#include "transport/search_turn.h"

using namespace Nuv::Transport;

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr uint16_t kPort = 6998;
constexpr int kTimeLimitMs = 5000;

class SearchLockFileTest : public ::testing::Test {
 protected:
  SearchLockFileTest() {
    std::string name = fs::temp_directory_path() / "turn.XXXXXX";
    temporary = mkdtemp(name.data());
    SetEnvironment("TMPDIR", temporary.c_str());
  }
  ~SearchLockFileTest() override {
    SetEnvironment("TMPDIR", "");
    fs::remove_all(temporary);
  }

  fs::path temporary;
};

TEST_F(SearchLockFileTest, LiesInAFolderOfTheUsersOwn) {
  const fs::path file = SearchLockFile(kPort).toStdString();
  const fs::path folder = file.parent_path();
  EXPECT_EQ(folder, temporary / ("nuvconnect-" + std::to_string(geteuid())));
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
  EXPECT_THAT(file.filename().string(), HasSubstr(std::to_string(kPort)));

  const std::function<void()> traps[] = {
      [&] {  // open to others
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::all);
      },
      [&] {  // a link
        fs::create_directory(temporary / "elsewhere");
        fs::permissions(temporary / "elsewhere", fs::perms::owner_all);
        fs::create_directory_symlink("elsewhere", folder);
      },
      [&] { std::ofstream(folder).put('x'); },
      [&] { fs::remove_all(temporary); },
  };
  for (const auto& trap : traps) {
    fs::remove_all(folder);
    trap();
    EXPECT_TRUE(SearchLockFile(kPort).isEmpty());
    ManualClock clock;
    EXPECT_THAT(ToldBy([&] { const SearchTurn turn(kPort, kTimeLimitMs, clock); }),
                HasSubstr("no lock file can be made"));
    EXPECT_EQ(clock.SleptMs(), 0) << "the search is made all the same";
  }
}

TEST_F(SearchLockFileTest, OfAProgramThatDiedIsVoid) {
  const pid_t program = fork();
  if (program == 0) {
    const SearchTurn turn(kPort, kTimeLimitMs);
    _exit(fs::exists(SearchLockFile(kPort).toStdString()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(program, &status, 0), program);
  ASSERT_EQ(status, 0);
  ASSERT_TRUE(fs::exists(SearchLockFile(kPort).toStdString())) << "left behind";
  ManualClock clock;
  const SearchTurn turn(kPort, kTimeLimitMs, clock);
  EXPECT_EQ(clock.SleptMs(), 0);
}

}  // namespace
