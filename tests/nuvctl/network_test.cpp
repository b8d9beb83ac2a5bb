#include "command_fixture.h"
#include "library.h"

namespace NuvCtl {
namespace {

struct NetworkTest : CommandTest {
  // As Ends; the key must be in nothing that comes out.
  CommandRun Discreetly(const std::string& arguments, int exit, const std::string& code = "") {
    const CommandRun run = Ends(Split(arguments), exit, code);
    const std::string all = run.out + run.err + document.dump() + system.prompt;
    EXPECT_EQ(all.find("geheim"), std::string::npos) << all;
    return run;
  }
};

TEST_F(NetworkTest, ListsAccessPointsAlsoBeyondItsArrayAndLeavesTheUnknownBlank) {
  g_fake.outOfReach = "Office";
  EXPECT_EQ(Both({"wifi", "list"}).out,
            "NAME     SIGNAL  SECURITY\n"
            "Lab net  80 %    secured\n"
            "Office   -       -\n");
  EXPECT_EQ(document, R"({"access_points": [
      {"name": "Lab net", "signal_percent": 80, "security": "secured"}, {"name": "Office"}]})"_json);
  g_fake.accessPoints.assign(1000, "Net");
  g_fake.accessPoints.back().assign(2 * NUV_TEXT_BYTES, 'x');  // fills its entry to the last byte
  Both({"wifi", "list"});
  EXPECT_EQ(document["access_points"].size(), 1000U);
  EXPECT_EQ(document["access_points"].back()["name"], std::string(TextList::kLength, 'x'));
  g_fake.accessPoints.clear();
  EXPECT_EQ(Both({"wifi", "list"}).out, "The printer sees no access point.\n");
}

TEST_F(NetworkTest, JoinsWithTheKeyThatIsReadAndMakesSure) {
  g_fake.joined.answers = {0, 0, 1};
  for (const char* typed : {"geheim 42", "geheim 42\n", "geheim 42\r\n"}) {
    g_fake.calls.clear();
    system.secret = typed;
    EXPECT_EQ(Discreetly("wifi connect Lab", kDone).out, "The printer joined Lab.\n");
    EXPECT_TRUE(Called("join Lab geheim 42"));
    EXPECT_EQ(system.prompt, "Key of Lab: ");
  }
}

TEST_F(NetworkTest, JoinsAnOpenOneWithoutAKeyAlsoWithTheNameOfACommand) {
  g_fake.joined.answers = {1};
  for (const char* name : {"Lab net", "list", "status", "wifi"}) {
    Ends({"wifi", "connect", "--open", name}, kDone);
    EXPECT_TRUE(Called("join " + std::string(name) + " "));
    EXPECT_EQ(system.prompt, "");
  }
}

TEST_F(NetworkTest, NeverRepeatsAKey) {
  const struct {
    const char* arguments;
    int result, exit;  // result: of joining
    const char* code;
  } kRows[] = {
      {"wifi connect Lab", NUV_PRINTER_REFUSED, kPrinterFailed, "refused"},
      {"wifi connect Lab", NUV_FAILED, kConnectionProblem, "no_answer"},
      {"wifi connect Lab --debug", NUV_OK, kPrinterFailed, "not_confirmed"},
      // Given on the command line by mistake.
      {"wifi connect Lab geheim", NUV_OK, kUsage, "usage"},
      {"wifi connect Lab --key geheim", NUV_OK, kUsage, "usage"},
      {"wifi connect Lab --open=geheim", NUV_OK, kUsage, "usage"},
      {"wifi connect Lab -- geheim", NUV_OK, kUsage, "usage"},
      {"wifi conect Lab geheim", NUV_OK, kUsage, "usage"},
      {"wifi connect --index geheim", NUV_OK, kUsage, "usage"},
  };
  system.secret = "geheim 42";
  for (const auto& row : kRows) {
    SetUp();
    g_fake.results[191] = row.result;
    Discreetly(row.arguments, row.exit, row.code);
    EXPECT_EQ(g_fake.calls.empty(), row.exit == kUsage);
  }
}

TEST_F(NetworkTest, RefusesWhatIsNoKeyWithoutASearch) {
  const std::optional<std::string> kSecrets[] = {std::nullopt, "\r\n", "geheim\rF101",
                                                 std::string("geheim\0x", 8)};
  for (const auto& secret : kSecrets) {
    system.secret = secret;
    Discreetly("wifi connect Lab", kUsage, "usage");
    EXPECT_TRUE(g_fake.calls.empty());
  }
}

TEST_F(NetworkTest, LeavesAndMakesSure) {
  EXPECT_EQ(Both({"wifi", "disconnect"}).out, "The printer left its access point.\n");
  EXPECT_TRUE(Called("leave"));
  g_fake.joined.answers = {1};
  Ends({"wifi", "disconnect"}, kPrinterFailed, "not_confirmed");
  g_fake.results[190] = NUV_FAILED;  // it was reached over that network
  Ends({"wifi", "disconnect"}, kConnectionProblem, "not_confirmed");
}

}  // namespace
}  // namespace NuvCtl
