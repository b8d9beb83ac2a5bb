#include <filesystem>
#include <fstream>

#include "command_fixture.h"
#include "print_watch.h"

namespace nuvctl {
namespace {

using testing::Test;

struct WatchTest : Test {
  void SetUp() override { fake = FakeLibrary(); }
  // The documents of the standard output, one per line.
  static std::vector<nlohmann::json> Lines(const CommandRun& run) {
    std::vector<nlohmann::json> documents;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
      documents.push_back(nlohmann::json::parse(line));
    }
    return documents;
  }
  FakeSystem system;
};

constexpr StateAnswer kIdle = {0, 0, 0};
constexpr StateAnswer kPrinting = {0, 1, 0};
constexpr StateAnswer kReceiving = {0, 2, 0};
constexpr StateAnswer kInError = {0, 3, 17};
constexpr StateAnswer kLost = {1, 0, 0};

TEST_F(WatchTest, WritesALinePerChangeUntilThePrintEnds) {
  const struct {
    const char* name;
    std::vector<StateAnswer> states;
    ExitCode exit;
    const char* out;
    const char* error;  // code, empty: none
    std::size_t lines;
    int64_t seconds;
  } kRows[] = {
      {"nothing to watch", {kIdle}, kDone, "idle\n", "", 1, 0},
      {"to its end",
       {kReceiving, kPrinting, kPrinting, kPrinting, kIdle},
       kDone,
       "receiving\n"
       "printing, layer 12 of 340, 34 %, 56 min left\n"
       "printing, layer 13 of 340, 35 %, 55 min left\n"
       "idle\n",
       "",
       4,
       4},
      {"to an error",
       {kPrinting, kInError},
       kPrinterFailed,
       "printing, layer 12 of 340, 34 %, 56 min left\nerror 17\n",
       "printer_error",
       3,
       1},
      {"lost",
       {kPrinting, kLost},
       kConnectionProblem,
       "printing, layer 12 of 340, 34 %, 56 min left\n",
       "no_answer",
       2,
       1},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    for (const bool json : {false, true}) {
      fake = FakeLibrary();
      fake.states.answers = row.states;
      fake.progress.answers = {{12, 34, 56}, {12, 34, 56}, {13, 35, 55}};
      system.now = 0;
      const CommandRun run(
          json ? std::vector<std::string>{"watch", "--json"} : std::vector<std::string>{"watch"},
          system);
      EXPECT_EQ(run.exit, row.exit);
      EXPECT_EQ(system.now, row.seconds * 1000);
      if (!json) {
        EXPECT_EQ(run.out, row.out);
        continue;
      }
      const std::vector<nlohmann::json> lines = Lines(run);
      EXPECT_EQ(lines.size(), row.lines);
      EXPECT_EQ(lines.back().value("/error/code"_json_pointer, std::string()), row.error);
      EXPECT_EQ(run.err, "");
    }
  }
}

TEST_F(WatchTest, TellsAllThatIsKnownOfThePrint) {
  fake.states.answers = {kPrinting, kIdle};
  EXPECT_EQ(Lines(CommandRun({"watch", "--json"}, system)).front(),
            nlohmann::json::parse(R"({"state": "printing", "state_number": 1, "layer": 12,
                                      "layers": 340, "percent": 34, "minutes_left": 56})"));
}

TEST_F(WatchTest, OverwritesItsRowOnATerminal) {
  system.terminal = true;
  system.width = 81;
  fake.states.answers = {kPrinting, kIdle};
  EXPECT_EQ(CommandRun({"watch"}, system).out,
            "\r[#######---------------]  printing, layer 12 of 340, 34 %, 56 min left"
            "\ridle" +
                std::string(66, ' ') + "\n");
  const PrintProgress odd = {2147483647, 2147483647, 400, -5};
  for (int width = -1; width < 200; ++width) {
    EXPECT_LE(static_cast<int>(WatchRow({1, 0}, odd, width).size()), std::max(width, 0));
  }
}

TEST_F(WatchTest, PrintThatEndsBetweenTwoQuestionsIsNoFailure) {
  fake.progress_result = NUV_NOT_PRINTING;
  fake.states.answers = {kPrinting, kIdle};
  const CommandRun run({"watch"}, system);
  EXPECT_EQ(run.exit, kDone);
  EXPECT_EQ(run.out, "idle\n");
}

TEST_F(WatchTest, IntervalIsAtLeastASecond) {
  fake.states.answers = {kPrinting, kIdle};
  EXPECT_EQ(CommandRun({"watch", "--interval", "2500"}, system).exit, kDone);
  EXPECT_EQ(system.now, 2500);
  EXPECT_EQ(CommandRun({"watch", "--interval", "999"}, system).exit, kUsage);
}

TEST_F(WatchTest, SendStaysAndFollowsThePrint) {
  const std::string file = testing::TempDir() + "nuvctl_watch.nuv";
  std::ofstream(file) << "data";
  for (const bool fails : {false, true}) {
    fake = FakeLibrary();
    fake.states.answers = {kIdle, kPrinting, fails ? kInError : kIdle};
    const CommandRun run({"send", "--watch", file, "--json"}, system);
    EXPECT_EQ(run.exit, fails ? kPrinterFailed : kDone);
    const std::vector<nlohmann::json> lines = Lines(run);
    ASSERT_EQ(lines.size(), fails ? 4u : 3u);
    EXPECT_EQ(lines[0]["result"], "accepted");
    EXPECT_EQ(lines[1]["layer"], 12);
    EXPECT_EQ(lines[2]["state"], fails ? "error" : "idle");
  }
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace nuvctl
