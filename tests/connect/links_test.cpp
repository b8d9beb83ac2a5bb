// The two links over TCP against a far end that does what it is told, and the sockets through the
// raw channel.

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "connect/local_link.h"
#include "connect/network_link.h"
#include "connect/search_settings.h"
#include "tests/connect/lab.h"
#include "tests/support/peer.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

class LinksTest : public Lab, public ::testing::WithParamInterface<bool> {
 protected:
  static constexpr int kLongMs = 60000;

  void SetUp() override {
    Lab::SetUp();
    if (IsSkipped()) return;
    StartTellingOf("127.0.0.1", peer.Port());
    Connect({});
  }
  void Connect(const Transport::TcpLimits& limits) {
    SearchSettings::Instance().SetTimeoutMs(kHurriedSearchMs);
    const bool usesSockets = GetParam();
    auto sockets = std::make_unique<SocketLink>(waiter, limits);
    auto network = std::make_unique<NetworkLink>(36000, waiter, limits);
    Strings found;
    while (found.size() < 2) {
      if (usesSockets) {
        ASSERT_TRUE(sockets->SearchDevices(found, "10.77.1.1", "255.255.255.0", kHurriedSearchMs));
      } else {
        found = network->EnumerateDevices();
      }
    }
    if (usesSockets) {
      link = std::move(sockets);
    } else {
      link = std::move(network);
    }
    EXPECT_EQ(link->Look(), LinkState::kClosed);
    ASSERT_EQ(link->Open(0), Reason::kNone);
    peer.Accept();
  }
  Reason Write(const std::string& text) {
    return link->Write(reinterpret_cast<const uint8_t*>(text.data()), text.size(), false);
  }

  Peer peer;
  Platform::Waiter waiter;
  std::unique_ptr<Link> link;
};

INSTANTIATE_TEST_SUITE_P(All, LinksTest, ::testing::Bool(), [](const auto& usesSockets) {
  return usesSockets.param ? "Sockets" : "Network";
});

TEST_P(LinksTest, NoticesThatThePrinterHasEndedTheConnection) {
  EXPECT_EQ(link->Open(7), Reason::kUnreachable) << "none was found there";
  EXPECT_EQ(link->Write(nullptr, 0, true), Reason::kNone);
  EXPECT_EQ(link->Look(), LinkState::kAlive);
  peer.Says("late\r\n");
  EXPECT_EQ(link->Look(), LinkState::kAlive) << "what came unasked is thrown away";
  EXPECT_EQ(Write("F102\r\n"), Reason::kNone);
  peer.Says("F102 OK\r\n");
  EXPECT_EQ(link->ReadReply().text, "F102 OK\r\n");
  peer.Says("late\r\n");
  peer.Closes();
  EXPECT_TRUE(link->Discard(kLongMs, kLongMs)) << "only the end ends this wait before its limit";
  for (int look = 0; look < 2; ++look) EXPECT_EQ(link->Look(), LinkState::kEnded);
  EXPECT_EQ(Write("F102\r\n"), Reason::kEnded);
  EXPECT_EQ(link->ReadReply().reason, Reason::kEnded);
  ASSERT_EQ(link->Reopen(false), Reason::kNone);
  EXPECT_EQ(link->Look(), LinkState::kAlive);
  peer.Accept();
  if (GetParam()) {  // of the network the channel throws it away
    peer.Says("late\r\n");
    EXPECT_EQ(Write("F102\r\n"), Reason::kNone);
    peer.Says("F102 OK\r\n");
    EXPECT_EQ(link->ReadReply().text, "F102 OK\r\n");
  }
  peer.Says("late\r\n");
  peer.Closes();
  EXPECT_EQ(link->Look(), LinkState::kEnded) << "what came before hides nothing";
  link->Close();
  EXPECT_EQ(link->Look(), LinkState::kClosed);
}

TEST_P(LinksTest, DiscardsUntilQuiet) {
  EXPECT_FALSE(link->Discard(1, kLongMs));
  peer.Says("late");
  EXPECT_TRUE(link->Discard(100, kLongMs));
  std::atomic<bool> over{false};
  std::thread drips([&] {
    while (!over) {
      peer.Says("x");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
  EXPECT_TRUE(link->Discard(kLongMs, 50)) << "the limit alone ends this wait";
  over = true;
  drips.join();
  EXPECT_EQ(link->Look(), LinkState::kAlive);
}

TEST_P(LinksTest, DropsAPrinterThatSendsWithoutAPause) {
  Transport::TcpLimits fewBytes;
  fewBytes.discardBytes = 1;
  Transport::TcpLimits noTime;
  noTime.discardMs = 0;
  for (const Transport::TcpLimits& limits : {fewBytes, noTime}) {
    Connect(limits);
    peer.Says("without a pause");
    EXPECT_TRUE(link->Discard(kLongMs, kLongMs)) << "over with the first of it";
    EXPECT_EQ(Write("F102\r\n"), Reason::kEnded);
    EXPECT_EQ(link->Look(), LinkState::kEnded);
  }
}

TEST_P(LinksTest, WriteThatIsNotTakenEndsTheConnection) {
  Transport::TcpLimits limits;
  limits.stallMs = 0;
  // A printer that acknowledged something before it stopped reading made the wait spin.
  for (const char* const pending : {"", "L100 OK\r\n"}) {
    Connect(limits);
    peer.Says(pending);
    EXPECT_EQ(Write(std::string(size_t{32} << 20, 'x')), Reason::kNotTaken)
        << "more than the system takes at once";
    EXPECT_EQ(link->Look(), LinkState::kClosed);
  }
}

TEST_P(LinksTest, WriteEndsWithTheConnection) {
  std::thread printer([&] {
    peer.Reads(1);
    peer.Closes();
  });
  EXPECT_EQ(Write(std::string(size_t{32} << 20, 'x')), Reason::kEnded);
  printer.join();
  EXPECT_EQ(link->Look(), LinkState::kEnded);
}

TEST_P(LinksTest, EndsWaitsWhenInterruptedOrGivenUp) {
  EXPECT_EQ(link->Identity(0), "127.0.0.1:" + std::to_string(peer.Port()));
  EXPECT_EQ(link->Identity(2) + link->Identity(-1), "");
  EXPECT_NE(link->Identity(1), "");
  Platform::Interrupt interrupt;
  interrupt.Raise();
  peer.Says("F102 OK\r\n");
  {
    const Platform::Waiter::Call call(waiter, &interrupt);
    EXPECT_EQ(link->ReadReply().reason, Reason::kGivenUp) << "though there is one";
  }
  EXPECT_EQ(link->ReadReply().text, "F102 OK\r\n");
  waiter.GiveUp();
  peer.Says("F102 OK\r\n");
  EXPECT_EQ(link->ReadReply().reason, Reason::kGivenUp) << "though there is one";
  EXPECT_EQ(link->Look(), LinkState::kAlive);
  EXPECT_EQ(link->Reopen(false), Reason::kGivenUp) << "nobody waits for a connection";
}

class LocalSocketsTest : public Lab {
 protected:
  IConnect& Channel() { return *framework.GetConnect(); }

  Strings found;
};

TEST_F(LocalSocketsTest, SearchesEveryNetworkOrOneAndReopensItsChoice) {
  Start({Printer("A1"), Printer("B1", "Zafel 1.0", kSecondNetwork)});
  for (const char* const search : {"first", "second"}) {
    EXPECT_EQ(framework.SearchNetworkDevice(found, "", "", kSearchMs), NUV_OK);
    EXPECT_THAT(found, UnorderedElementsAre(HasSubstr("CN:A1"), HasSubstr("CN:B1"))) << search;
  }
  EXPECT_EQ(framework.SearchNetworkDevice(found, "10.77.2.1", "255.255.255.0", kSearchMs), NUV_OK);
  EXPECT_THAT(found, ElementsAre(HasSubstr("CN:B1")));
  EXPECT_EQ(framework.SearchNetworkDevice(found, "10.99.1.1", "255.255.255.0", kSearchMs),
            NUV_NOT_FOUND)
      << "no way to that network";
  EXPECT_TRUE(found.empty());
  EXPECT_EQ(framework.SetUpdPort(6999), NUV_OK);
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
  EXPECT_FALSE(Channel().SearchDevices(found, "10.99.1.1", "255.255.255.0", kSearchMs));
  EXPECT_FALSE(Channel().ChooseDevice(0, 0)) << "it has found nothing";
}

TEST_F(LocalSocketsTest, ExchangesCommandsWithAPrinterOfTheSearch) {
  Start({Printer("A1")});
  Channel().SetLocalOption(1);
  EXPECT_FALSE(Channel().ChooseDevice(0, 0)) << "nothing searched yet";
  ASSERT_TRUE(Channel().SearchDevices(found, "", "", kSearchMs));
  EXPECT_FALSE(Channel().ChooseDevice(0, 1));
  ASSERT_TRUE(Channel().ChooseDevice(0, 0));
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  EXPECT_EQ(Channel().ExecuteCommand("F102\r\n"), "F102 OK S:0\r");
  std::vector<uint8_t> bytes;
  EXPECT_TRUE(Channel().ReadLocalData(bytes));
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "F102 OK S:0\r\n");
  // The other mode knows nothing of this connection, and closes it.
  EXPECT_EQ(ToldBy([&] { Channel().SetLocalOption(7); }), "[NKG]local link: no mode 7\n");
  Channel().SetLocalOption(0);
  EXPECT_FALSE(Channel().ReadLocalData(bytes));
  EXPECT_EQ(Channel().ExecuteCommand("F102\r\n"), "");
  EXPECT_TRUE(Becomes([&] { return !simulator->Status().connected; }));
}

}  // namespace
}  // namespace Nuv::Connect
