#include "command_fixture.h"

namespace NuvCtl {
namespace {

class NetworkTest : public CommandTest {
 protected:
  void SetUp() override {
    CommandTest::SetUp();
    One("Fabrix150 xP");
  }
  // As Ends; the key must be in nothing that comes out.
  void Discreetly(const Words& arguments, int wanted, const std::string& code = "") {
    Run(arguments);
    const std::string told = out + err;
    Ends(arguments, wanted, code);
    const std::string all = told + out + err + system.prompt;
    EXPECT_THAT(all, Not(HasSubstr("horse")));
  }
};

TEST_F(NetworkTest, ListsAccessPointsAndLeavesTheUnknownBlank) {
  Commits("refuse,code=190,skip=1");
  EXPECT_EQ(Run("wifi list"), kDone);
  EXPECT_EQ(out,
            "NAME      SIGNAL  SECURITY\n"
            "Lab net   80 %    secured\n"
            "Open net  -       -\n");
  Ends("wifi list", kDone);
  EXPECT_EQ(document, R"({"access_points": [
      {"name": "Lab net", "signal_percent": 80, "security": "secured"},
      {"name": "Open net", "signal_percent": 40, "security": "open"}]})"_json);
}

TEST_F(NetworkTest, JoinsWithTheKeyThatIsReadAndLeaves) {
  for (const char* typed : {"correct horse", "correct horse\n", "correct horse\r\n"}) {
    system.secret = typed;
    Discreetly({"wifi", "connect", "Lab net"}, kDone);
    EXPECT_THAT(system.prompt, HasSubstr("Key of Lab net: "));
  }
  Ends("wifi status", kDone);
  EXPECT_EQ(document["name"], "Lab net");
  EXPECT_EQ(document["signal_percent"], 80);
  EXPECT_TRUE(document.contains("address")) << out;
  Ends("wifi disconnect", kDone);
  Ends("wifi status", kDone);
  EXPECT_EQ(document["connected"], false);
  Ends({"wifi", "connect", "--open", "Open net"}, kDone);
}

TEST_F(NetworkTest, TellsAWrongKeyFromANetworkOutOfReach) {
  system.secret = "wrong horse";
  Discreetly({"wifi", "connect", "Lab net"}, kPrinterFailed, "wrong_key");
  Discreetly({"wifi", "connect", "Far net"}, kPrinterFailed, "out_of_reach");
}

TEST_F(NetworkTest, NeverRepeatsAKey) {
  system.secret = "correct horse";
  for (const char* line :
       {"wifi connect Lab horse", "wifi connect Lab --key horse", "wifi connect Lab --open=horse",
        "wifi connect Lab -- horse", "wifi connect --index horse"}) {
    Discreetly(Split(line), kUsage, "usage");
  }
  const std::optional<std::string> kSecrets[] = {std::nullopt, "\r\n", "horse\rF101",
                                                 std::string("horse\0x", 7)};
  for (const auto& secret : kSecrets) {
    system.secret = secret;
    Discreetly({"wifi", "connect", "Lab net"}, kUsage, "usage");
  }
  EXPECT_EQ(simulator->Totals().connections, 0U);
}

}  // namespace
}  // namespace NuvCtl
