// The local link's sockets against the simulator.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <memory>

#include "nuvsim/simulator.h"
#include "tests/support/environment.h"
#include "tests/support/manual_clock.h"
#include "tests/transport/peer.h"
#include "transport/addresses.h"
#include "transport/network_device_searcher.h"
#include "transport/search_bounds.h"
#include "transport/tcp_client_socket.h"
#include "transport/tcp_device_connector.h"
#include "transport/udp_search_socket.h"

using namespace Nuv::Transport;

namespace {

using ::testing::HasSubstr;
using Texts = std::vector<std::string>;

TEST(NetworksToSearchTest, LoopbackAddressesAreLeftOut) {
  const std::vector<HostInterface> interfaces = {{"127.0.0.1", "255.0.0.0", true, true},
                                                 {"10.0.5.7", "255.255.0.0", true, false},
                                                 {"10.1.0.7", "255.255.0.0", false, false}};
  const struct {
    Texts hostAddresses;
    Texts networks;
  } kRows[] = {
      {{"10.0.5.7"}, {"10.0.5.7/255.255.0.0"}},
      {{"127.0.1.1", "10.0.5.7"}, {"10.0.5.7/255.255.0.0"}},
      {{"192.168.1.1"}, {"192.168.1.1/"}},
      {{"127.0.0.1", "127.0.1.1"}, {"10.0.5.7/255.255.0.0"}},
      {{}, {"10.0.5.7/255.255.0.0"}},
  };
  for (const auto& row : kRows) {
    Texts networks;
    for (const HostNetwork& each : NetworksToSearch(row.hostAddresses, interfaces)) {
      networks.push_back(each.address + "/" + each.netmask);
    }
    EXPECT_EQ(networks, row.networks);
  }
}

class SocketLayerTest : public ::testing::Test {
 protected:
  void Start(const std::string& address, bool discovery = false, const std::string& name = "x") {
    NuvSim::SimulatorConfig config;
    config.discovery = discovery;
    config.printers = {NuvSim::LoopbackPrinter()};
    config.printers.front().address = address;
    config.printers.front().name = name;
    simulator = std::make_unique<NuvSim::Simulator>(std::move(config));
    simulator->Start();
  }

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

  std::unique_ptr<NuvSim::Simulator> simulator;
  TcpClientSocket socket;
};

TEST_F(SocketLayerTest, TcpExchange) {
  Start("127.0.0.1");
  for (const char* host : {"", "localhost", "127.0.0.1"}) {
    ASSERT_TRUE(socket.Connect(host, simulator->TcpPort())) << host;
    EXPECT_EQ(Send("F102\r\n"), 0);
    EXPECT_EQ(Read(9000), "F102 OK S:0\r\n");
  }
  EXPECT_EQ(Read(999), "<nothing>") << "no whole second: does not wait";
  EXPECT_EQ(Send(""), -1);
  EXPECT_EQ(simulator->Totals().requests, 3U);
  // A read gives no more than its block.
  NuvSim::Fault fault = NuvSim::MakeFault(NuvSim::FaultKind::kAnswer, 102);
  fault.text = std::string(512, 'x') + "rest";
  simulator->InjectFault(0, fault);
  ASSERT_EQ(Send("F102\r\n"), 0);
  EXPECT_EQ(Read(9000), std::string(512, 'x'));
  EXPECT_EQ(Read(9000), "rest\r\n");
}

TEST_F(SocketLayerTest, TcpEndsAndRefusals) {
  Start("127.0.0.1");
  const uint16_t port = simulator->TcpPort();
  EXPECT_EQ(Send("F102\r\n"), -1) << "never opened";
  EXPECT_EQ(Read(9000), "<nothing>");
  simulator->InjectFault(0, NuvSim::MakeFault(NuvSim::FaultKind::kDrop, 102));
  ASSERT_TRUE(socket.Connect("", port));
  ASSERT_EQ(Send("F102\r\n"), 0);
  EXPECT_EQ(Read(9000), "<closed>");
  socket.Close();
  socket.Close();
  EXPECT_EQ(Send("F102\r\n"), -1);
  simulator.reset();
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(socket.Connect("", port));
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("error connecting to server: "));
  EXPECT_FALSE(socket.IsOpen());
  EXPECT_FALSE(socket.Connect("no.such.host.invalid", port));
}

TEST_F(SocketLayerTest, WriteThatIsNotTakenFailsInTime) {
  TcpLimits limits;
  limits.stallMs = 100;
  TcpClientSocket writer(limits);
  Peer peer;
  for (const char* const pending : {"", "L100 OK\r\n"}) {
    ASSERT_TRUE(writer.Connect("", peer.Port()));
    peer.Accept();
    peer.Says(pending);
    const std::string endless(size_t{32} << 20, 'x');
    EXPECT_EQ(writer.Send(endless.data(), static_cast<int>(endless.size())), -1);
  }
}

TEST_F(SocketLayerTest, ConnectionThatNobodyTakesFailsInTime) {
  constexpr size_t kMore = 300;  // than the system keeps for one who does not accept
  TcpLimits limits;
  limits.connectMs = 100;
  Peer peer;
  std::deque<TcpClientSocket> sockets;
  do {
    sockets.emplace_back(limits);
  } while (sockets.back().Connect("", peer.Port()) && sockets.size() < kMore);
  EXPECT_LT(sockets.size(), kMore);
  EXPECT_FALSE(sockets.back().IsOpen());
  EXPECT_FALSE(TcpDeviceConnector(limits).Connect("127.0.0.1", peer.Port()));
}

class UdpSearchTest : public SocketLayerTest {
 protected:
  static constexpr char kMessage[] = "F195\r\n";
  static constexpr int kLength = 6;
  static constexpr uint16_t kPort = 6013;
  static constexpr int kWaitMs = 200;

  void SetUp() override {
    if (std::getenv("NUV_PRIVATE_NETWORK") == nullptr) {
      GTEST_SKIP() << "searches printers: run it through in_private_network.sh";
    }
    ASSERT_TRUE(search.Open());
  }

  // A flood takes the simulator a while to make; once it runs, the search ends by its bounds.
  static constexpr int kFloodWaitMs = 3000;

  // What a search of the first network gives, and how often it tells that it dropped the rest.
  struct Found {
    size_t answers = 0;
    size_t bytes = 0;
    size_t told = 0;
  };
  template <class Search>
  static Found FoundBy(const Search& search) {
    SetEnvironment("NUVCONNECT_DEBUG", "1");
    ::testing::internal::CaptureStderr();
    Found found;
    for (const auto& answer : search()) {
      ++found.answers;
      found.bytes += answer.size();
    }
    const std::string text = ::testing::internal::GetCapturedStderr();
    SetEnvironment("NUVCONNECT_DEBUG", "");
    constexpr char kTold[] = "the rest is dropped\n";
    for (size_t at = text.find(kTold); at != std::string::npos; at = text.find(kTold, at + 1)) {
      ++found.told;
    }
    return found;
  }
  static Found Local(Nuv::Platform::Clock& limiting) {
    return FoundBy([&] {
      const Nuv::Platform::Waiter waiter(limiting);
      UdpSearchSocket local(waiter);
      local.Open();
      local.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, kFloodWaitMs);
      return local.Replies();
    });
  }
  // On both networks: what is still on its way when the first is done comes to the second.
  static Found Channel(Nuv::Platform::Clock& limiting) {
    return FoundBy([&] {
      const Nuv::Platform::Waiter waiter(limiting);
      NetworkDeviceSearcher searcher(kMessage, waiter);
      return searcher.Search(kPort, kFloodWaitMs);
    });
  }

  ManualClock clock;
  Nuv::Platform::Waiter waiter{clock};
  UdpSearchSocket search{waiter};
};

// A second goes by with each wait.
class HurryingClock final : public Nuv::Platform::Clock {
 public:
  Nuv::Platform::Deadline Now() const override { return now_; }
  void SleepFor(std::chrono::milliseconds) override {}
  Nuv::Platform::WaitEnd WaitReady(Nuv::Platform::Handle handle, Nuv::Platform::Readiness readiness,
                                   Nuv::Platform::Deadline deadline,
                                   const Nuv::Platform::Interrupts& interrupts) override {
    const auto end = Clock::WaitReady(handle, readiness, deadline, interrupts);
    now_ += std::chrono::seconds(1);
    return end;
  }

 private:
  Nuv::Platform::Deadline now_{0};
};

TEST_F(UdpSearchTest, ADeviceThatKeepsSendingEndsTheSearch) {
  constexpr size_t kSeconds = 30;
  EXPECT_EQ(SearchBounds::Longest(3000), std::chrono::seconds(kSeconds));
  EXPECT_EQ(SearchBounds::Longest(4000), std::chrono::seconds(40)) << "ten time limits";
  Start("10.77.1.2", true);
  simulator->InjectFault(0, NuvSim::ParseFault("burst,count=-1,n=20000"));
  HurryingClock hurrying;
  const struct {
    Nuv::Platform::Clock& clock;
    size_t least;
    size_t most;
  } kRows[] = {{clock, SearchBounds::kMostAnswers, SearchBounds::kMostAnswers},
               {hurrying, kSeconds - 5, kSeconds}};
  for (const auto& row : kRows) {
    const Found local = Local(row.clock);
    EXPECT_GE(local.answers, row.least);
    EXPECT_LE(local.answers, row.most);
    EXPECT_EQ(local.told, 1U);
    const Found channel = Channel(row.clock);
    EXPECT_GE(channel.answers, row.least);
    EXPECT_LE(channel.answers, 2 * row.most);
    EXPECT_GE(channel.told, 1U);
    EXPECT_LE(channel.told, 2U);
  }
}

TEST_F(UdpSearchTest, LongAnswersEndTheSearchBeforeManyDo) {
  constexpr size_t kNameBytes = 1000;
  Start("10.77.1.2", true, std::string(kNameBytes, 'n'));
  simulator->InjectFault(0, NuvSim::ParseFault("burst,count=-1,n=20000"));
  const size_t bytes = Channel(clock).bytes;
  EXPECT_GT(bytes, SearchBounds::kMostBytes - 2 * kNameBytes);
  EXPECT_LE(bytes, 2 * SearchBounds::kMostBytes);
}

TEST_F(UdpSearchTest, RepeatedAnswersAreKeptAndLongOnesCut) {
  Start("10.77.1.2", true);
  simulator->InjectFault(0, NuvSim::ParseFault("duplicate,n=2"));
  simulator->InjectFault(0, NuvSim::ParseFault("foreign,text=" + std::string(300, '\xE9')));
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, 0), 1);
  ASSERT_EQ(search.Replies().size(), 4U);
  EXPECT_EQ(search.Replies()[0], std::wstring(255, L'\xE9')) << "a character per byte";
  EXPECT_EQ(search.Replies()[1], search.Replies()[3]);
  EXPECT_EQ(clock.SleptMs(), 100) << "before it reads";
}

TEST_F(UdpSearchTest, FailuresAreTold) {
  SetEnvironment("NUVCONNECT_DEBUG", "1");
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.88.1.1", "255.255.255.0", kPort, kWaitMs), 0)
      << "no way to that network";
  EXPECT_THAT(
      ::testing::internal::GetCapturedStderr(),
      ::testing::AllOf(::testing::StartsWith("[NKG]sendto error!, error code is "),
                       ::testing::EndsWith("\n"), ::testing::Not(::testing::HasSubstr("?"))));
  SetEnvironment("NUVCONNECT_DEBUG", "");
  search.Close();
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, kWaitMs), 0);
  search.BroadcastAll(kMessage, kLength, kPort, kWaitMs);
  EXPECT_TRUE(search.Replies().empty());
  EXPECT_EQ(clock.SleptMs(), 0);
}

}  // namespace
