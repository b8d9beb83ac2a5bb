#include "command_fixture.h"

namespace nuvctl {
namespace {

constexpr char kKey[] = "geheim 42";

struct WifiTest : CommandTest {
  bool Called(const std::string& call) const {
    return std::find(fake.calls.begin(), fake.calls.end(), call) != fake.calls.end();
  }
  // As Both; the key must be in nothing that comes out.
  CommandRun Discreetly(const std::vector<std::string>& arguments) {
    const CommandRun run = Both(arguments);
    const std::string all = run.out + run.err + document.dump() + system.prompt;
    EXPECT_EQ(all.find("geheim"), std::string::npos) << all;
    return run;
  }
};

TEST_F(WifiTest, ListsAccessPointsAlsoBeyondItsArrayAndLeavesTheUnknownBlank) {
  fake.out_of_reach = "Office";
  EXPECT_EQ(Both({"wifi", "list"}).out,
            "NAME     SIGNAL  SECURITY\n"
            "Lab net  80 %    secured\n"
            "Office   -       -\n");
  EXPECT_EQ(document, nlohmann::json::parse(R"({"access_points": [
      {"name": "Lab net", "signal_percent": 80, "security": "secured"}, {"name": "Office"}]})"));
  fake.access_points.assign(1000, "Net");
  fake.access_points.back() = "Last";
  Both({"wifi", "list"});
  EXPECT_EQ(document["access_points"].size(), 1000U);
  EXPECT_EQ(document["access_points"].back()["name"], "Last");
  fake.access_points.clear();
  EXPECT_EQ(Both({"wifi", "list"}).out, "The printer sees no access point.\n");
}

TEST_F(WifiTest, TellsWhetherThePrinterIsJoined) {
  fake.joined.answers = {1};
  EXPECT_NE(Both({"wifi", "status"}).out.find("Joined to an access point:  yes\n"),
            std::string::npos);
  EXPECT_EQ(document, nlohmann::json::parse(R"({"connected": true,
      "mac_wifi": "02:00:00:00:00:01", "mac_lan": "02:00:00:00:00:02"})"));
}

TEST_F(WifiTest, JoinsWithTheKeyThatIsReadAndMakesSure) {
  fake.joined.answers = {0, 0, 1};
  for (const char* typed : {"geheim 42", "geheim 42\n", "geheim 42\r\n"}) {
    fake.calls.clear();
    system.secret = typed;
    EXPECT_EQ(Discreetly({"wifi", "connect", "Lab net"}).out, "The printer joined Lab net.\n");
    EXPECT_TRUE(Called(std::string("join Lab net with ") + kKey));
    EXPECT_EQ(system.prompt, "Key of Lab net: ");
  }
  system.prompt.clear();
  EXPECT_EQ(Discreetly({"wifi", "connect", "--open", "Lab net"}).exit, kDone);
  EXPECT_TRUE(Called("join Lab net with "));
  EXPECT_EQ(system.prompt, "");
}

TEST_F(WifiTest, NeverRepeatsAKey) {
  const struct {
    std::vector<std::string> arguments;
    std::optional<std::string> secret;
    int result;  // of joining
    int exit;
    const char* code;
  } kRows[] = {
      {{"wifi", "connect", "Lab"}, kKey, NUV_PRINTER_REFUSED, kPrinterFailed, "refused"},
      {{"wifi", "connect", "Lab"}, kKey, NUV_FAILED, kConnectionProblem, "no_answer"},
      {{"wifi", "connect", "Lab"}, kKey, 0, kPrinterFailed, "not_confirmed"},
      {{"wifi", "connect", "Lab", "--debug"}, kKey, 0, kPrinterFailed, "not_confirmed"},
      {{"wifi", "connect", "Lab"}, std::nullopt, 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab"}, "\r\n", 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab"}, "geheim\rF101", 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab"}, std::string("geheim\0x", 8), 0, kUsage, "usage"},
      {{"wifi", "connect", ""}, kKey, 0, kUsage, "usage"},
      // Given on the command line by mistake.
      {{"wifi", "connect", "Lab", kKey}, kKey, 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab", "--key", kKey}, kKey, 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab", "--open=geheim"}, kKey, 0, kUsage, "usage"},
      {{"wifi", "connect", "Lab", "--", kKey}, kKey, 0, kUsage, "usage"},
      {{"wifi", "conect", "Lab", kKey}, kKey, 0, kUsage, "usage"},
      {{"wifi", "connect", "--index", kKey}, kKey, 0, kUsage, "usage"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    SetUp();
    system.secret = row.secret;
    fake.results[191] = row.result;
    EXPECT_EQ(Discreetly(row.arguments).exit, row.exit);
    EXPECT_EQ(ErrorCode(), row.code);
    EXPECT_EQ(fake.calls.empty(), row.exit == kUsage);
  }
}

TEST_F(WifiTest, LeavesAndMakesSure) {
  EXPECT_EQ(Both({"wifi", "disconnect"}).out, "The printer left its access point.\n");
  EXPECT_TRUE(Called("leave"));
  fake.joined.answers = {1};
  EXPECT_EQ(Both({"wifi", "disconnect"}).exit, kPrinterFailed);
  EXPECT_EQ(ErrorCode(), "not_confirmed");
  fake.results[190] = NUV_FAILED;  // it was reached over that network
  EXPECT_EQ(Both({"wifi", "disconnect"}).exit, kConnectionProblem);
  EXPECT_EQ(ErrorCode(), "not_confirmed");
}

TEST_F(WifiTest, AnAccessPointMayHaveTheNameOfACommand) {
  fake.joined.answers = {1};
  for (const char* name : {"list", "status", "wifi"}) {
    EXPECT_EQ(Both({"wifi", "connect", "--open", name}).exit, kDone) << name;
    EXPECT_TRUE(Called("join " + std::string(name) + " with "));
  }
  EXPECT_EQ(Both({"wifi"}).exit, kUsage);
}

}  // namespace
}  // namespace nuvctl
