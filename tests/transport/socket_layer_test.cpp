// The local link's sockets: exchanges with a far end that does what it is told, searches against
// the simulator.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <memory>

#include "nuvsim/simulator.h"
#include "tests/support/manual_clock.h"
#include "tests/support/peer.h"
#include "tests/support/qt_warnings.h"
#include "tests/support/told.h"
#include "transport/addresses.h"
#include "transport/network_device_searcher.h"
#include "transport/search_bounds.h"
#include "transport/socket_system.h"
#include "transport/tcp_client_socket.h"
#include "transport/tcp_device_connector.h"
#include "transport/udp_search_socket.h"

using namespace Nuv::Transport;

namespace {

#if defined(_WIN32)
constexpr int kRefused = 10061;
#else
constexpr int kRefused = ECONNREFUSED;
#endif

using ::testing::HasSubstr;
using Texts = std::vector<std::string>;

TEST(NetworksToSearchTest, LoopbackAddressesAreLeftOut) {
  const std::vector<HostInterface> interfaces = {{"127.0.0.1", "255.0.0.0", true, true},
                                                 {"10.0.5.7", "255.255.0.0", true, false},
                                                 {"10.1.0.7", "255.255.0.0", false, false}};
  const std::pair<Texts, Texts> rows[] = {
      {{"10.0.5.7"}, {"10.0.5.7/255.255.0.0"}},
      {{"127.0.1.1", "10.0.5.7"}, {"10.0.5.7/255.255.0.0"}},
      {{"192.168.1.1"}, {"192.168.1.1/"}},
      {{"127.0.0.1", "127.0.1.1"}, {"10.0.5.7/255.255.0.0"}},
      {{}, {"10.0.5.7/255.255.0.0"}},
  };
  for (const auto& [hostAddresses, networks] : rows) {
    Texts found;
    for (const HostNetwork& each : NetworksToSearch(hostAddresses, interfaces)) {
      found.push_back(each.address + "/" + each.netmask);
    }
    EXPECT_EQ(found, networks);
  }
}

class TcpClientSocketTest : public ::testing::Test {
 protected:
  // What one read gives: the bytes, "<closed>", or "<nothing>".
  std::string Read(int timeoutMs) {
    char buffer[TcpClientSocket::kReadBytes] = {};
    int received = -7;
    if (socket.Receive(buffer, timeoutMs, received) != 0) return "<nothing>";
    return received == 0 ? "<closed>" : std::string(buffer, static_cast<size_t>(received));
  }
  int Send(const std::string& text) {
    return socket.Send(text.data(), static_cast<int>(text.size()));
  }

  Peer peer;
  TcpClientSocket socket;
};

TEST_F(TcpClientSocketTest, ExchangesBlocksUntilTheEnd) {
  EXPECT_EQ(Send("F102\r\n"), -1) << "never opened";
  EXPECT_EQ(Read(9000), "<nothing>");
  for (const char* host : {"", "localhost", "127.0.0.1"}) {
    ASSERT_TRUE(socket.Connect(host, peer.Port())) << host;
    peer.Accept();
    EXPECT_EQ(Send("F102\r\n"), 0);
    EXPECT_EQ(peer.Reads(6), "F102\r\n");
  }
  EXPECT_EQ(Read(999), "<nothing>") << "no whole second: does not wait";
  EXPECT_EQ(Send(""), -1);
  peer.Says(std::string(512, 'x') + "rest");
  EXPECT_EQ(Read(9000), std::string(512, 'x')) << "no more than its block";
  EXPECT_EQ(Read(9000), "rest");
  peer.Closes();
  EXPECT_EQ(Read(9000), "<closed>");
  socket.Close();
  socket.Close();
  EXPECT_EQ(Send("F102\r\n"), -1);
}

TEST_F(TcpClientSocketTest, RefusedConnectionIsTold) {
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(socket.Connect("", 1)) << "nobody listens there";
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              HasSubstr("error connecting to server: " + std::to_string(kRefused)));
  EXPECT_FALSE(socket.IsOpen());
  EXPECT_FALSE(socket.Connect("no.such.host.invalid", peer.Port()));
}

TEST_F(TcpClientSocketTest, ConnectionThatNobodyTakesFailsInTime) {
  constexpr size_t kMore = 300;  // than the system keeps for one who does not accept
  TcpLimits limits;
  limits.connectMs = 100;
  std::deque<TcpClientSocket> sockets;
  do {
    sockets.emplace_back(limits);
  } while (sockets.back().Connect("", peer.Port()) && sockets.size() < kMore);
  EXPECT_LT(sockets.size(), kMore);
  EXPECT_FALSE(sockets.back().IsOpen());
  EXPECT_FALSE(TcpDeviceConnector(limits).Connect("127.0.0.1", peer.Port()));
}

TEST(SocketSystemTest, KnowsTheInterfacesOfThisMachine) {
  std::vector<std::string> found;
  for (const HostInterface& each : SocketSystem::Interfaces()) {
    found.push_back(each.address + "/" + each.netmask + (each.running ? " running" : "") +
                    (each.loopback ? " loopback" : ""));
  }
  EXPECT_THAT(found, ::testing::Contains("10.77.1.1/255.255.255.0 running"));
  EXPECT_THAT(found, ::testing::Each(::testing::Not(HasSubstr("/ ")))) << "each has its netmask";
  EXPECT_THAT(SocketSystem::ResolveIPv4("localhost"), ::testing::ElementsAre("127.0.0.1"));
  // Not every system lists it.
  EXPECT_THAT(found, ::testing::Each(
                         ::testing::AnyOf("127.0.0.1/255.0.0.0 running loopback",
                                          ::testing::Not(::testing::StartsWith("127.0.0.1/")))));
}

TEST(SearchBoundsTest, EndASearchByTimeAnswersOrBytes) {
  ManualClock clock;
  SearchBounds time("net", 4000, clock);
  EXPECT_EQ(time.WaitMs(), 4000);
  clock.Advance(std::chrono::seconds(37));
  EXPECT_EQ(time.WaitMs(), 3000) << "of ten time limits";
  clock.Advance(std::chrono::seconds(3));
  EXPECT_EQ(ToldBy([&] { EXPECT_EQ(time.WaitMs(), 0); }),
            "[NKG]search on net: still answers after 40 s, the rest is dropped\n");
  EXPECT_EQ(SearchBounds::Longest(2999), std::chrono::seconds(30)) << "at least";
  SearchBounds answers("net", 4000, clock);
  for (size_t i = 0; i < SearchBounds::kMostAnswers; ++i) ASSERT_TRUE(answers.Takes(1));
  EXPECT_FALSE(answers.Takes(1));
  SearchBounds bytes("net", 4000, clock);
  EXPECT_TRUE(bytes.Takes(SearchBounds::kMostBytes));
  EXPECT_FALSE(bytes.Takes(1));
}

class UdpSearchTest : public ::testing::Test {
 protected:
  static constexpr char kMessage[] = "F195\r\n";
  static constexpr int kLength = 6;
  static constexpr uint16_t kPort = 6013;
  static constexpr int kWaitMs = 200;
  // A flood takes the simulator a while to make; once it runs, the search ends by its bounds.
  static constexpr int kFloodWaitMs = 3000;

  void SetUp() override {
    if (std::getenv("NUV_PRIVATE_NETWORK") == nullptr) {
      GTEST_SKIP() << "searches printers: run it through in_private_network.sh";
    }
    ExpectNoQtWarnings();
    ASSERT_TRUE(search.Open());
  }

  // A printer that can be found, with faults.
  void Start(const Texts& faults) {
    NuvSim::SimulatorConfig config;
    config.discovery = true;
    config.printers = {NuvSim::LoopbackPrinter()};
    config.printers.front().address = "10.77.1.2";
    simulator = std::make_unique<NuvSim::Simulator>(std::move(config));
    simulator->Start();
    for (const std::string& each : faults) simulator->InjectFault(0, NuvSim::ParseFault(each));
  }

  // How many answers a search gives that drops the rest.
  template <class Search>
  static size_t FoundBy(const Search& search) {
    size_t answers = 0;
    EXPECT_THAT(ToldBy([&] { answers = search().size(); }),
                HasSubstr("more than 4096 answers or 1048576 bytes, the rest is dropped\n"));
    return answers;
  }

  ManualClock clock;
  Nuv::Platform::Waiter waiter{clock};
  UdpSearchSocket search{waiter};
  std::unique_ptr<NuvSim::Simulator> simulator;
};

TEST_F(UdpSearchTest, ADeviceThatKeepsSendingEndsTheSearch) {
  Start({"burst,count=-1,n=20000"});
  EXPECT_EQ(FoundBy([&] {
              search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort,
                                 kFloodWaitMs);
              return search.Replies();
            }),
            SearchBounds::kMostAnswers);
  // On both networks: what is still on its way when the first is done comes to the second.
  const size_t both =
      FoundBy([&] { return NetworkDeviceSearcher(kMessage, waiter).Search(kPort, kFloodWaitMs); });
  EXPECT_GE(both, SearchBounds::kMostAnswers);
  EXPECT_LE(both, 2 * SearchBounds::kMostAnswers);
}

TEST_F(UdpSearchTest, ARepeatedAnswerCountsOnceTowardsTheBounds) {
  Start({"duplicate,count=-1,n=" + std::to_string(SearchBounds::kMostAnswers)});
  NetworkDeviceSearcher searcher(kMessage, waiter);
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(searcher.Search(kPort, kWaitMs).size(), 1U); }),
              ::testing::Not(HasSubstr("dropped")));
}

TEST_F(UdpSearchTest, RepeatedAnswersAreKeptAndLongOnesCut) {
  Start({"duplicate,n=2", "foreign,text=" + std::string(300, '\xE9')});
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, 0), 1);
  ASSERT_EQ(search.Replies().size(), 4U);
  EXPECT_EQ(search.Replies()[0], std::wstring(255, L'\xE9')) << "a character per byte";
  EXPECT_EQ(search.Replies()[1], search.Replies()[3]);
  search.BroadcastAll(kMessage, kLength, kPort, 0);
  EXPECT_EQ(search.Replies().size(), 1U) << "of the last search";
  EXPECT_EQ(clock.SleptMs(), 200) << "before each is read";
}

TEST_F(UdpSearchTest, FailuresAreTold) {
  // There is no way to that network.
  const auto sendElsewhere = [&] {
    EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.88.1.1", "255.255.255.0", kPort, kWaitMs),
              0);
  };
  EXPECT_THAT(ToldBy(sendElsewhere),
              ::testing::AllOf(::testing::StartsWith("[NKG]sendto error!, error code is "),
                               ::testing::EndsWith("\n"), ::testing::Not(HasSubstr("?"))));
  EXPECT_TRUE(search.Open()) << "once more";
  search.Close();
  EXPECT_EQ(ToldBy(sendElsewhere), "") << "nothing is open";
  search.BroadcastAll(kMessage, kLength, kPort, kWaitMs);
  EXPECT_TRUE(search.Replies().empty());
  EXPECT_EQ(clock.SleptMs(), 0);
}

}  // namespace
