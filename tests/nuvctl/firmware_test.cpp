#include <filesystem>
#include <fstream>

#include "command_fixture.h"

namespace nuvctl {
namespace {

constexpr int kPanelBytes = 21504;

struct FirmwareTest : CommandTest {
  void TearDown() override { std::filesystem::remove(file); }
  CommandRun Update(const std::string& kind, int bytes, std::vector<std::string> options = {}) {
    content.clear();
    for (int i = 0; i < bytes; ++i) content += static_cast<char>(i * 31 >> 3);
    std::ofstream(file, std::ios::binary) << content;
    options.insert(options.begin(), {"firmware", kind, file, "--json"});
    const CommandRun run(options, system);
    document = run.Json();
    return run;
  }
  bool Announced() const {
    return std::find(fake.calls.begin(), fake.calls.end(), "image") != fake.calls.end();
  }

  const std::string file = testing::TempDir() + "nuvctl firmware.bin";
  std::string content;
};

TEST_F(FirmwareTest, IsAnnouncedSentAndEndedInTheWayOfItsKind) {
  using Calls = std::vector<std::string>;
  const struct {
    const char* kind;
    int bytes;
    Calls calls;
    const char* json;
  } kRows[] = {
      {"engine",
       30000,
       {"engine 30000 nuvctl firmware.bin", "image"},
       R"({"result": "sent", "firmware": "1.2"})"},
      {"android",
       1,
       {"android 1 1 nuvctl firmware.bin", "image", "start"},
       R"({"result": "accepted"})"},
      {"panel",
       kPanelBytes,
       {"panel nuvctl firmware.bin", "image", "finish"},
       R"({"result": "accepted", "answer": "Done"})"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.kind);
    fake = FakeLibrary();
    EXPECT_EQ(Update(row.kind, row.bytes, {"--yes"}).exit, kDone);
    fake.calls.erase(fake.calls.begin(), fake.calls.begin() + 2);  // list, open
    EXPECT_EQ(fake.calls, row.calls);
    EXPECT_EQ(fake.image, content);
    nlohmann::json expected = nlohmann::json::parse(row.json);
    expected.update({{"kind", row.kind}, {"file", file}, {"bytes", row.bytes}});
    EXPECT_EQ(document["seconds"], 0.0);
    document.erase("seconds");
    EXPECT_EQ(document, expected);
  }
}

TEST_F(FirmwareTest, IsRefusedBeforeAnySearch) {
  const struct {
    const char* kind;
    int bytes;
    std::vector<std::string> options;
    ExitCode exit;
    const char* code;
  } kRows[] = {
      {"engine", 0, {"--yes"}, kFileProblem, "wrong_size"},
      {"android", 0, {"--yes"}, kFileProblem, "wrong_size"},
      {"panel", kPanelBytes - 1, {"--yes"}, kFileProblem, "wrong_size"},
      {"panel", kPanelBytes + 1, {"--yes"}, kFileProblem, "wrong_size"},
      {"motor", 10, {"--yes"}, kUsage, "usage"},
      {"engine", 10, {}, kUsage, "usage"},  // nobody to ask
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(Update(row.kind, row.bytes, row.options).exit, row.exit);
    EXPECT_EQ(ErrorCode(), row.code);
    EXPECT_TRUE(fake.calls.empty());
  }
  std::filesystem::resize_file(file, std::uintmax_t{1} << 31);
  EXPECT_EQ(CommandRun({"firmware", "engine", file, "--yes"}, system).exit, kFileProblem);
  EXPECT_EQ(CommandRun({"firmware", "engine", file + ".missing"}, system).exit, kFileProblem);
}

TEST_F(FirmwareTest, AsksAtATerminal) {
  system.terminal = true;
  for (const char* answer : {"y\n", "Y", "n\n", "\n", "", "later\n"}) {
    fake = FakeLibrary();
    system.answer = answer;
    const bool yes = answer[0] == 'y' || answer[0] == 'Y';
    EXPECT_EQ(Update("android", 2000).exit, yes ? kDone : kCancelled);
    EXPECT_EQ(Announced(), yes);
    EXPECT_NE(system.prompt.find("Android board of SN1 (Fabrix100 xP)"), std::string::npos);
  }
  system.answer.reset();
  EXPECT_EQ(Update("android", 2000).exit, kCancelled);
}

TEST_F(FirmwareTest, IsASuccessOnlyWhenThePrinterSaysSo) {
  constexpr int kRefused = NUV_PRINTER_REFUSED;
  const struct {
    const char* kind;
    std::map<int, int> results;
    StateAnswer state;
    ExitCode exit;
    const char* code;
    bool sends;
  } kRows[] = {
      {"engine", {{141, kRefused}}, {0, 0, 0}, kPrinterFailed, "refused", false},
      {"android", {{506, kRefused}}, {0, 0, 0}, kPrinterFailed, "refused", false},
      {"panel", {{188, 1}}, {0, 0, 0}, kConnectionProblem, "no_answer", false},
      {"panel", {}, {0, 1, 0}, kPrinterFailed, "busy", false},
      {"android", {{507, kRefused}}, {0, 0, 0}, kPrinterFailed, "update_failed", true},
      {"panel", {{189, 1}}, {0, 0, 0}, kConnectionProblem, "update_unconfirmed", true},
      {"engine", {{101, 1}}, {0, 0, 0}, kConnectionProblem, "update_unconfirmed", true},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.code);
    fake = FakeLibrary();
    fake.results = row.results;
    fake.states.answers = {row.state};
    EXPECT_EQ(Update(row.kind, kPanelBytes, {"--yes"}).exit, row.exit);
    EXPECT_EQ(ErrorCode(), row.code);
    EXPECT_EQ(Announced(), row.sends);
    EXPECT_EQ(document.value("result", ""), row.sends ? "not_confirmed" : "");
  }
}

TEST_F(FirmwareTest, EngineThatRestartsIsAskedOnANewConnection) {
  fake.results = {{101, 1}};
  fake.answers_when_reopened = 3;
  EXPECT_EQ(Update("engine", kPanelBytes, {"--yes"}).exit, 0);
  EXPECT_EQ(document["result"], "sent");
}

TEST_F(FirmwareTest, CtrlCCancelsAndStartsNothing) {
  for (const char* kind : {"engine", "android", "panel"}) {
    fake = FakeLibrary();
    system.interrupted = false;
    fake.before_step = [this](size_t sent) { system.interrupted = sent == kPanelBytes; };
    EXPECT_EQ(Update(kind, kPanelBytes, {"--yes"}).exit, kCancelled);
    EXPECT_EQ(ErrorCode(), "cancelled");
    EXPECT_EQ(document["bytes"], kPanelBytes / 2);
    EXPECT_NE(document["error"]["hint"].get<std::string>().find("keeps its old firmware"),
              std::string::npos);
    EXPECT_EQ(fake.calls.back(), "image");
  }
}

}  // namespace
}  // namespace nuvctl
