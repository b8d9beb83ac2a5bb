#include "command_fixture.h"

namespace NuvCtl {
namespace {

constexpr size_t kPanelBytes = 21504;

class FirmwareTest : public CommandTest {
 protected:
  void SetUp() override {
    CommandTest::SetUp();
    One("Fabrix150 xP");
    for (size_t i = 0; i < kPanelBytes; ++i) image += static_cast<char>(i * 31 >> 3);
  }
  void Update(const std::string& part, const std::string& bytes, const Words& options, int wanted,
              const std::string& code = "") {
    Words arguments = {"firmware", part, File(bytes, "f w.bin")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Ends(arguments, wanted, code);
  }
  std::string image;
};

TEST_F(FirmwareTest, ArrivesAndSaysWhatThePrinterSaid) {
  const struct {
    const char *part, *result, *key;  // key: what else is told
  } rows[] = {{"engine", "sent", "firmware"},
              {"android", "accepted", "answer"},
              {"panel", "accepted", "answer"}};
  for (const auto& row : rows) {
    Update(row.part, image, {"--yes"}, kDone);
    EXPECT_EQ(simulator->ReceivedBytes(row.part), image);
    EXPECT_EQ(document["result"], row.result);
    EXPECT_EQ(document["bytes"], kPanelBytes);
    EXPECT_TRUE(document.contains(row.key));
  }
}

TEST_F(FirmwareTest, ThatIsPlainlyNoneIsNotSentUnlessForced) {
  Update("engine", "\x89PNG" + image, {"--yes"}, kNotFit, "not_fit");
  Update("android", "", {"--yes"}, kNotFit, "not_fit");
  Update("panel", image + "x", {"--yes", "--force"}, kNotFit, "not_fit");
  Update("motor", image, {"--yes"}, kUsage, "usage");
  Update("engine", image, {}, kUsage, "usage");  // nobody to ask
  Ends({"firmware", "engine", "missing", "--yes"}, kFileProblem, "file_not_readable");
  simulator->SetError(0, 3);
  Update("engine", image, {"--yes"}, kPrinterFailed, "busy");
  simulator->ClearError(0);
  EXPECT_TRUE(simulator->Received().empty());
  Update("engine", "\x89PNG" + image, {"--yes", "--force"}, kDone);
}

TEST_F(FirmwareTest, IsAskedAboutWithTheVersionThatIsOnIt) {
  system.terminal = true;
  for (const char* answer : {"n\n", "", "later\n"}) {
    system.answer = answer;
    Update("android", image, {}, kCancelled, "cancelled");
  }
  EXPECT_TRUE(simulator->Received().empty());
  EXPECT_THAT(
      system.prompt,
      HasSubstr("Android board of the Fabrix150 xP \"Lab one\" at 127.0.0.1, version 2.1.0"));
  system.answer = "Y";
  Update("android", image, {}, kDone);
}

TEST_F(FirmwareTest, IsASuccessOnlyWhenThePrinterSaysSo) {
  const struct {
    const char *part, *fault;
    int exit;
    const char* code;
  } rows[] = {
      {"engine", "refuse,code=141,count=-1", kPrinterFailed, "update_failed"},
      {"android", "refuse,code=507,count=-1", kPrinterFailed, "update_failed"},
      {"android", "drop-after,bytes=9000", kConnectionProblem, "update_unconfirmed"},
  };
  for (const auto& row : rows) {
    Commits(row.fault);
    Update(row.part, image, {"--yes"}, row.exit, row.code);
    simulator->ClearFaults(0);
  }
}

TEST_F(FirmwareTest, CtrlCCancelsAndStartsNothing) {
  const std::string large(2000000, 'x');
  system.interrupts = [&] {
    const auto received = simulator->Received();
    return !received.empty() && received.back().receivedBytes > 100000;
  };
  Update("android", '\0' + large, {"--yes"}, kCancelled, "cancelled");
  EXPECT_LT(document["bytes"], 2000000);
  EXPECT_THAT(out, HasSubstr("keeps its old firmware"));
}

}  // namespace
}  // namespace NuvCtl
