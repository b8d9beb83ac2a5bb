// The local link's sockets, through the raw channel and by themselves, and the network link.

#include <gmock/gmock.h>

#include "connect/local_link.h"
#include "connect/network_link.h"
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
    NuvSim::Fault fault = NuvSim::MakeFault(NuvSim::FaultKind::kAnswer, 102);
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

// The link itself, connected to the one printer.
class SocketLinkTest : public Lab {
 protected:
  void StartConnected() {
    simulator.reset();
    Start({Printer("A1")});
    std::vector<std::string> found;
    EXPECT_EQ(link->Identity(0), "") << "nothing searched yet";
    ASSERT_TRUE(link->SearchDevices(found, "10.77.1.1", "255.255.255.0", kSearchMs));
    EXPECT_EQ(link->Identity(0), "10.77.1.2:" + std::to_string(simulator->TcpPort()));
    EXPECT_EQ(link->Identity(1), "");
    ASSERT_EQ(link->Open(0), Reason::kNone);
  }
  Reason Write(const std::string& text) {
    return link->Write(reinterpret_cast<const uint8_t*>(text.data()), text.size(), false);
  }

  static constexpr int kLongMs = 20000;

  Platform::Waiter waiter;
  std::unique_ptr<SocketLink> link = std::make_unique<SocketLink>(waiter);
};

TEST_F(SocketLinkTest, NoticesThatThePrinterHasEndedTheConnection) {
  EXPECT_EQ(link->Look(), LinkState::kClosed);
  StartConnected();
  EXPECT_EQ(link->Look(), LinkState::kAlive);
  for (const char* const end : {"drop,code=102", "reset,code=102"}) {
    Commits(end);
    ASSERT_EQ(Write("F101\r\nF102\r\n"), Reason::kNone);
    // Behind a reply that nobody reads; the end alone ends this wait before its limit.
    EXPECT_TRUE(link->Discard(kLongMs, kLongMs));
    EXPECT_EQ(link->Look(), LinkState::kEnded);
    EXPECT_EQ(link->Look(), LinkState::kEnded);
    EXPECT_FALSE(link->IsOpen());
    EXPECT_EQ(Write("F102\r\n"), Reason::kEnded);
    EXPECT_EQ(link->ReadReply().reason, Reason::kEnded);
    ASSERT_EQ(link->Reopen(false), Reason::kNone);
    EXPECT_EQ(link->Look(), LinkState::kAlive);
    ASSERT_EQ(Write("F102\r\n"), Reason::kNone);
    EXPECT_EQ(link->ReadReply().text, "F102 OK S:0\r\n");
  }
  link->Close();
  EXPECT_EQ(link->Look(), LinkState::kClosed);
}

TEST_F(SocketLinkTest, DiscardsUntilQuiet) {
  StartConnected();
  EXPECT_FALSE(link->Discard(1, kLongMs));
  ASSERT_EQ(Write("F101\r\n"), Reason::kNone);
  EXPECT_TRUE(link->Discard(500, kLongMs));
  // Seconds of drops: the limit alone ends this wait.
  Commits("pieces,code=101,bytes=1,ms=50");
  ASSERT_EQ(Write("F101\r\n"), Reason::kNone);
  EXPECT_TRUE(link->Discard(kLongMs, 200));
  EXPECT_EQ(link->Look(), LinkState::kAlive);
}

TEST_F(SocketLinkTest, DropsAPrinterThatSendsWithoutAPause) {
  Transport::TcpLimits fewBytes;
  fewBytes.discardBytes = 1;
  Transport::TcpLimits noTime;
  noTime.discardMs = 0;
  for (const Transport::TcpLimits& limits : {fewBytes, noTime}) {
    link = std::make_unique<SocketLink>(waiter, limits);
    StartConnected();
    ASSERT_EQ(Write("F101\r\n"), Reason::kNone);
    EXPECT_TRUE(link->Discard(kLongMs, kLongMs)) << "over with the first of the reply";
    EXPECT_EQ(Write("F102\r\n"), Reason::kEnded);
    EXPECT_EQ(link->Look(), LinkState::kEnded);
  }
}

TEST_F(SocketLinkTest, WriteThatIsNotTakenEndsTheConnection) {
  Transport::TcpLimits limits;
  limits.stallMs = 0;
  link = std::make_unique<SocketLink>(waiter, limits);
  StartConnected();
  EXPECT_EQ(Write(std::string(size_t{32} << 20, 'x')), Reason::kNotTaken)
      << "more than the system takes at once";
  EXPECT_EQ(link->Look(), LinkState::kClosed);
}

TEST_F(SocketLinkTest, InterruptEndsTheWaitForAReply) {
  StartConnected();
  Platform::Interrupt interrupt;
  interrupt.Raise();
  const auto answered = simulator->Totals().answersSent;
  ASSERT_EQ(Write("F102\r\n"), Reason::kNone);
  ASSERT_TRUE(Becomes([&] { return simulator->Totals().answersSent == answered + 1; }));
  {
    const Platform::Waiter::Call call(waiter, &interrupt);
    EXPECT_EQ(link->ReadReply().reason, Reason::kGivenUp) << "though there is one";
  }
  EXPECT_EQ(link->ReadReply().text, "F102 OK S:0\r\n");
}

// The link of the TCP connector.
class NetworkLinkTest : public Lab {};

TEST_F(NetworkLinkTest, EndsWaitsWhenInterruptedOrGivenUp) {
  Start({Printer("A1")});
  Platform::Waiter waiter;
  NetworkLink link(36000, waiter);
  std::vector<std::string> found;
  SearchSettings::Instance().SetTimeoutMs(kSearchMs);
  ASSERT_TRUE(link.EnumerateDevices(found));
  EXPECT_EQ(link.Identity(0), "10.77.1.2:" + std::to_string(simulator->TcpPort()));
  EXPECT_EQ(link.Identity(1) + link.Identity(-1), "");
  EXPECT_EQ(link.Look(), LinkState::kClosed);
  ASSERT_EQ(link.Open(0), Reason::kNone);
  EXPECT_EQ(link.Look(), LinkState::kAlive);

  const std::string request = "F102\r\n";
  const auto write = [&] {
    return link.Write(reinterpret_cast<const uint8_t*>(request.data()), request.size(), false);
  };
  const auto answered = simulator->Totals().answersSent;
  ASSERT_EQ(write(), Reason::kNone);
  ASSERT_TRUE(Becomes([&] { return simulator->Totals().answersSent == answered + 1; }));
  Platform::Interrupt interrupt;
  interrupt.Raise();
  {
    const Platform::Waiter::Call call(waiter, &interrupt);
    EXPECT_EQ(link.ReadReply().reason, Reason::kGivenUp) << "though there is one";
  }
  EXPECT_EQ(link.ReadReply().text, "F102 OK S:0\r\n");

  ASSERT_EQ(write(), Reason::kNone);
  waiter.GiveUp();
  EXPECT_EQ(link.ReadReply().reason, Reason::kGivenUp) << "though there is one";
  EXPECT_EQ(link.Look(), LinkState::kAlive);
  EXPECT_EQ(link.Reopen(false), Reason::kGivenUp) << "nobody waits for a connection";
}

}  // namespace
}  // namespace Nuv::Connect
