// The local link's socket mode, through the raw channel and by itself, and the network link.

#include <gmock/gmock.h>

#include <thread>

#include "connect/search_settings.h"
#include "connect/socket_mode.h"
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

// The mode itself, connected to the one printer.
class SocketModeTest : public Lab {
 protected:
  void StartConnected() {
    simulator.reset();
    Start({Printer("A1")});
    std::vector<std::string> found;
    EXPECT_EQ(mode->Identity(0), "") << "nothing searched yet";
    ASSERT_TRUE(
        mode->SearchDevices("F195\r\n", 6013, "10.77.1.1", "255.255.255.0", kSearchMs, found));
    EXPECT_EQ(mode->Identity(0), "10.77.1.2:" + std::to_string(simulator->TcpPort()));
    EXPECT_EQ(mode->Identity(1), "");
    ASSERT_TRUE(mode->Open(0));
  }
  bool Write(const std::string& text) {
    return mode->Write(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  }

  static constexpr int kLongMs = 20000;

  std::unique_ptr<SocketMode> mode = std::make_unique<SocketMode>();
};

TEST_F(SocketModeTest, NoticesThatThePrinterHasEndedTheConnection) {
  EXPECT_EQ(mode->Look(), LinkState::kClosed);
  StartConnected();
  EXPECT_EQ(mode->Look(), LinkState::kAlive);
  for (const char* const end : {"drop,code=102", "reset,code=102"}) {
    Commits(end);
    ASSERT_TRUE(Write("F101\r\nF102\r\n"));
    // Behind a reply that nobody reads; the end alone ends this wait before its limit.
    EXPECT_TRUE(mode->DiscardUntilQuiet(kLongMs, kLongMs));
    EXPECT_EQ(mode->Look(), LinkState::kEnded);
    EXPECT_EQ(mode->Look(), LinkState::kEnded);
    EXPECT_FALSE(mode->IsOpen());
    EXPECT_FALSE(Write("F102\r\n"));
    EXPECT_EQ(mode->ReadReply(nullptr), "");
    ASSERT_TRUE(mode->Reopen(false));
    EXPECT_EQ(mode->Look(), LinkState::kAlive);
    ASSERT_TRUE(Write("F102\r\n"));
    EXPECT_EQ(mode->ReadReply(nullptr), "F102 OK S:0\r\n");
  }
  mode->Close();
  EXPECT_EQ(mode->Look(), LinkState::kClosed);
}

TEST_F(SocketModeTest, DiscardsUntilQuiet) {
  StartConnected();
  EXPECT_FALSE(mode->DiscardUntilQuiet(1, kLongMs));
  ASSERT_TRUE(Write("F101\r\n"));
  EXPECT_TRUE(mode->DiscardUntilQuiet(500, kLongMs));
  // Seconds of drops: the limit alone ends this wait.
  Commits("pieces,code=101,bytes=1,ms=50");
  ASSERT_TRUE(Write("F101\r\n"));
  EXPECT_TRUE(mode->DiscardUntilQuiet(kLongMs, 200));
  EXPECT_EQ(mode->Look(), LinkState::kAlive);
}

TEST_F(SocketModeTest, DropsAPrinterThatSendsWithoutAPause) {
  TcpLimits fewBytes;
  fewBytes.discardBytes = 1;
  TcpLimits noTime;
  noTime.discardMs = 0;
  for (const TcpLimits& limits : {fewBytes, noTime}) {
    mode = std::make_unique<SocketMode>(limits);
    StartConnected();
    ASSERT_TRUE(Write("F101\r\n"));
    EXPECT_TRUE(mode->DiscardUntilQuiet(kLongMs, kLongMs)) << "over with the first of the reply";
    EXPECT_FALSE(Write("F102\r\n"));
    EXPECT_EQ(mode->Look(), LinkState::kEnded);
  }
}

TEST_F(SocketModeTest, WriteThatIsNotTakenEndsTheConnection) {
  TcpLimits limits;
  limits.stallMs = 0;
  mode = std::make_unique<SocketMode>(limits);
  StartConnected();
  EXPECT_FALSE(Write(std::string(size_t{32} << 20, 'x'))) << "more than the system takes at once";
  EXPECT_EQ(mode->Look(), LinkState::kEnded);
}

TEST_F(SocketModeTest, InterruptEndsTheWaitForAReply) {
  StartConnected();
  Platform::Interrupt interrupt;
  interrupt.Raise();
  Commits("late,code=102,ms=2500");
  ASSERT_TRUE(Write("F102\r\n"));
  EXPECT_EQ(mode->ReadReply(&interrupt), "");
  EXPECT_EQ(mode->ReadReply(nullptr), "F102 OK S:0\r\n");
}

// The link of the TCP connector.
class NetworkLinkTest : public Lab {};

TEST_F(NetworkLinkTest, EndsWaitsWhenInterruptedOrGivenUp) {
  Start({Printer("A1")});
  NetworkLink link(36000);
  std::vector<std::string> found;
  SearchSettings::Instance().set_timeout_ms(kSearchMs);
  ASSERT_TRUE(link.EnumerateDevices(found));
  EXPECT_EQ(link.Identity(0), "10.77.1.2:" + std::to_string(simulator->TcpPort()));
  EXPECT_EQ(link.Identity(1) + link.Identity(-1), "");
  EXPECT_EQ(link.Look(), LinkState::kClosed);
  ASSERT_TRUE(link.Open(0));
  EXPECT_EQ(link.Look(), LinkState::kAlive);

  const std::string request = "F102\r\n";
  const auto write = [&] {
    return link.Write(reinterpret_cast<const uint8_t*>(request.data()), request.size(), false);
  };
  Commits("late,code=102,ms=2500");
  ASSERT_TRUE(write());
  Platform::Interrupt interrupt;
  std::thread raises([&] { interrupt.Raise(); });
  EXPECT_EQ(link.ReadReply(&interrupt), "");
  raises.join();
  EXPECT_EQ(link.ReadReply(nullptr), "F102 OK S:0\r\n");

  ASSERT_TRUE(write());
  link.GiveUp();
  EXPECT_EQ(link.ReadReply(nullptr), "") << "though there is one";
  EXPECT_FALSE(write());
  EXPECT_FALSE(link.Reopen());
  EXPECT_FALSE(link.Open(0));
  EXPECT_FALSE(link.OpenAddress("10.77.1.2"));
  EXPECT_EQ(link.Look(), LinkState::kAlive);
}

}  // namespace
}  // namespace Nuv::Connect
