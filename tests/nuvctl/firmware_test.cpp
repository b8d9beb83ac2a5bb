#include <filesystem>
#include <fstream>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

constexpr int kPanelBytes = 21504;

struct FirmwareTest : CommandTest {
  void TearDown() override { std::filesystem::remove(file); }
  // As Ends, for scripts only.
  void Update(const std::string& kind, int bytes, Words options, int exit,
              const std::string& code = "") {
    content.clear();
    for (int i = 0; i < bytes; ++i) content += static_cast<char>(i * 31 >> 3);
    std::ofstream(file, std::ios::binary) << content;
    options.insert(options.begin(), {"firmware", kind, file});
    EXPECT_EQ(Json(options).exit, exit) << kind;
    EXPECT_EQ(ErrorCode(), code) << kind;
  }

  const std::string file = testing::TempDir() + "f w.bin";
  std::string content;
};

TEST_F(FirmwareTest, IsAnnouncedSentAndEndedInTheWayOfItsKind) {
  const struct {
    const char* kind;
    int bytes;
    Words calls;
    const char *result, *key, *value;  // key and value: what else is told
  } kRows[] = {
      {"engine", 30000, {"engine 30000 f w.bin", "image"}, "sent", "firmware", "1.2"},
      {"android", 1, {"android 1 1 f w.bin", "image", "start"}, "accepted", nullptr, nullptr},
      {"panel", kPanelBytes, {"panel f w.bin", "image", "finish"}, "accepted", "answer", "Done"},
  };
  for (const auto& row : kRows) {
    SetUp();
    Update(row.kind, row.bytes, {"--yes"}, kDone);
    g_fake.calls.erase(g_fake.calls.begin(), g_fake.calls.begin() + 2);  // list, open
    EXPECT_EQ(g_fake.calls, row.calls);
    EXPECT_EQ(g_fake.image, content);
    nlohmann::json expected = {{"kind", row.kind},
                               {"file", file},
                               {"bytes", row.bytes},
                               {"result", row.result},
                               {"seconds", 0.0}};
    if (row.key != nullptr) expected[row.key] = row.value;
    EXPECT_EQ(document, expected);
  }
}

TEST_F(FirmwareTest, IsRefusedBeforeAnySearch) {
  Update("engine", 0, {"--yes"}, kFileProblem, "wrong_size");
  Update("panel", kPanelBytes - 1, {"--yes"}, kFileProblem, "wrong_size");
  Update("panel", kPanelBytes + 1, {"--yes"}, kFileProblem, "wrong_size");
  Update("motor", 10, {"--yes"}, kUsage, "usage");
  Update("engine", 10, {}, kUsage, "usage");  // nobody to ask
  std::filesystem::resize_file(file, std::uintmax_t{1} << 31);
  Ends({"firmware", "engine", file, "--yes"}, kFileProblem, "wrong_size");
  Ends({"firmware", "engine", file + ".missing"}, kFileProblem, "file_not_readable");
  EXPECT_TRUE(g_fake.calls.empty());
}

TEST_F(FirmwareTest, AsksAtATerminal) {
  system.terminal = true;
  for (const char* answer : {"y\n", "Y", "n\n", "\n", "", "later\n"}) {
    SetUp();
    system.answer = answer;
    const bool yes = answer[0] == 'y' || answer[0] == 'Y';
    Update("android", 2000, {}, yes ? kDone : kCancelled, yes ? "" : "cancelled");
    EXPECT_EQ(Called("image"), yes);
    EXPECT_NE(system.prompt.find("Android board of SN1 (Fabrix100 xP)"), std::string::npos);
  }
  system.answer.reset();
  Update("android", 2000, {}, kCancelled, "cancelled");
}

TEST_F(FirmwareTest, IsASuccessOnlyWhenThePrinterSaysSo) {
  constexpr int kRefused = NUV_PRINTER_REFUSED;
  const struct {
    const char* kind;
    std::map<int, int> results;
    ExitCode exit;
    const char* code;
    bool sends;
    StateAnswer state = kIdle;
  } kRows[] = {
      {"engine", {{141, kRefused}}, kPrinterFailed, "refused", false},
      {"android", {{506, kRefused}}, kPrinterFailed, "refused", false},
      {"panel", {{188, NUV_FAILED}}, kConnectionProblem, "no_answer", false},
      {"panel", {}, kPrinterFailed, "busy", false, kPrinting},
      {"android", {{507, kRefused}}, kPrinterFailed, "update_failed", true},
      {"panel", {{189, NUV_FAILED}}, kConnectionProblem, "update_unconfirmed", true},
      {"engine", {{101, NUV_FAILED}}, kConnectionProblem, "update_unconfirmed", true},
  };
  for (const auto& row : kRows) {
    SetUp();
    g_fake.results = row.results;
    g_fake.states.answers = {row.state};
    Update(row.kind, kPanelBytes, {"--yes"}, row.exit, row.code);
    EXPECT_EQ(Called("image"), row.sends);
    EXPECT_EQ(document.value("result", ""), row.sends ? "not_confirmed" : "");
  }
}

TEST_F(FirmwareTest, EngineThatRestartsIsAskedOnANewConnection) {
  g_fake.results = {{101, 1}};
  g_fake.answersWhenReopened = 3;
  Update("engine", kPanelBytes, {"--yes"}, kDone);
  EXPECT_EQ(document["result"], "sent");
}

TEST_F(FirmwareTest, CtrlCCancelsAndStartsNothing) {
  for (const char* kind : {"engine", "android", "panel"}) {
    SetUp();
    g_fake.beforeStep = [this](size_t step) { system.interrupted = step == 1; };
    Update(kind, kPanelBytes, {"--yes"}, kCancelled, "cancelled");
    EXPECT_EQ(document["bytes"], kPanelBytes / 2);
    EXPECT_NE(document.dump().find("keeps its old firmware"), std::string::npos);
    EXPECT_EQ(g_fake.calls.back(), "image");
  }
}

}  // namespace
}  // namespace NuvCtl
