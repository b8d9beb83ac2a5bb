// The local link's socket mode through the raw channel: its search, its connection, its replies.

#include <gmock/gmock.h>

#include "connect/search_settings.h"
#include "tests/connect/lab.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class LocalSocketsTest : public Lab {
 protected:
  IConnect& Channel() { return *framework.GetConnect(); }

  std::vector<std::string> found;
};

TEST_F(LocalSocketsTest, SearchesEveryNetworkOrOneAndReopensItsChoice) {
  Start({Printer("A1"), Printer("B1", "Zafel 1.0", kSecondNetwork)});
  EXPECT_EQ(framework.SearchNetworkDevice(found, "", "", kSearchMs), NUV_OK);
  EXPECT_THAT(found, UnorderedElementsAre(HasSubstr("CN:A1"), HasSubstr("CN:B1")));
  EXPECT_EQ(framework.SearchNetworkDevice(found, "10.77.2.1", "255.255.255.0", kSearchMs), NUV_OK);
  EXPECT_THAT(found, ElementsAre(HasSubstr("CN:B1")));
  EXPECT_EQ(framework.SearchNetworkDevice(found, "10.99.1.1", "255.255.255.0", kSearchMs),
            NUV_NOT_FOUND)
      << "no way to that network";
  EXPECT_TRUE(found.empty());
  framework.SetUpdPort(6999);
  for (const char* address : {"", "10.77.2.1"}) {
    EXPECT_EQ(framework.SearchNetworkDevice(found, address, "", 1), NUV_NOT_FOUND)
        << "nobody answers on that port";
  }
  framework.SetUpdPort(kDefaultSearchPort);

  Channel().SetLocalOption(1);
  EXPECT_FALSE(Channel().OpenDevice()) << "none was chosen";
  ASSERT_TRUE(Channel().SearchDevices(found, "10.77.1.1", "255.255.255.0", kSearchMs));
  ASSERT_TRUE(Channel().ChooseDevice(0, 0));
  ASSERT_TRUE(Channel().SearchDevices(found, "10.77.2.1", "255.255.255.0", kSearchMs));
  EXPECT_TRUE(Channel().OpenDevice());
  EXPECT_EQ(NameOfCurrent(), "printer-A1") << "whatever a later search found";
}

TEST_F(LocalSocketsTest, ExchangesCommandsWithAPrinterOfTheSearch) {
  Start({Printer("A1")});
  Channel().SetLocalOption(1);
  EXPECT_FALSE(Channel().ChooseDevice(0, 0)) << "nothing searched yet";
  ASSERT_TRUE(Channel().SearchDevices(found, "", "", kSearchMs));
  EXPECT_FALSE(Channel().ChooseDevice(0, 1));
  ASSERT_TRUE(Channel().ChooseDevice(0, 0));
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  // A reply of the block's length, a longer one, one in pieces, one that came twice.
  for (const size_t length : {size_t{510}, size_t{511}, size_t{2000}}) {
    nuvsim::Fault fault = nuvsim::MakeFault(nuvsim::FaultKind::kAnswer, 102);
    fault.text = std::string(length, 'x');
    Commits(fault);
    EXPECT_EQ(Channel().ExecuteCommand("F102\r\n"), fault.text + "\r");
  }
  Commits("pieces,code=102,bytes=5,ms=1");
  EXPECT_EQ(Channel().ExecuteCommand("F102\r\n"), "F102 OK S:0\r");
  std::vector<uint8_t> bytes;
  EXPECT_TRUE(Channel().ReadLocalData(bytes));
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "F102 OK S:0\r\n");
  Commits("twice,code=102");
  EXPECT_THAT(Channel().ExecuteCommand("F102\r\n"), HasSubstr("F102 OK S:0"));
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  // The other mode knows nothing of this connection, and closes it.
  Channel().SetLocalOption(0);
  EXPECT_FALSE(Channel().ReadLocalData(bytes));
  EXPECT_EQ(Channel().ExecuteCommand("F102\r\n"), "");
  EXPECT_TRUE(Becomes([&] { return !simulator->Status().connected; }));
}

}  // namespace
}  // namespace Nuv::Connect
