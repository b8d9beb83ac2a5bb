// The local link's sockets against the simulator.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <memory>

#include "nuvsim/simulator.h"
#include "tests/support/manual_clock.h"
#include "tests/support/watchdog.h"
#include "tests/transport/peer.h"
#include "transport/search_networks.h"
#include "transport/tcp_client_socket.h"
#include "transport/tcp_device_connector.h"
#include "transport/udp_search_socket.h"

namespace {

using ::testing::HasSubstr;
using Texts = std::vector<std::string>;

TEST(NetworksToSearchTest, NamesThatMeanLoopbackOnlySearchTheInterfaces) {
  const std::vector<HostInterface> interfaces = {{"127.0.0.1", "255.0.0.0", true, true},
                                                 {"10.0.5.7", "255.255.0.0", true, false},
                                                 {"10.1.0.7", "255.255.0.0", false, false}};
  const struct {
    Texts hostAddresses;
    Texts networks;
  } kRows[] = {
      {{"10.0.5.7"}, {"10.0.5.7/255.255.0.0"}},
      {{"127.0.1.1", "10.0.5.7"}, {"127.0.1.1/", "10.0.5.7/255.255.0.0"}},
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
  void Start(const std::string& address, bool discovery = false) {
    nuvsim::SimulatorConfig config;
    config.discovery = discovery;
    config.printers = {nuvsim::LoopbackPrinter()};
    config.printers.front().address = address;
    simulator = std::make_unique<nuvsim::Simulator>(std::move(config));
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

  std::unique_ptr<nuvsim::Simulator> simulator;
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
  nuvsim::Fault fault = nuvsim::MakeFault(nuvsim::FaultKind::kAnswer, 102);
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
  simulator->InjectFault(0, nuvsim::MakeFault(nuvsim::FaultKind::kDrop, 102));
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
  const Watchdog watchdog;
  TcpLimits limits;
  limits.stallMs = 100;
  TcpClientSocket writer(limits);
  Peer peer;
  for (const char* const pending : {"", "L100 OK\r\n"}) {
    ASSERT_TRUE(writer.Connect("", peer.port()));
    peer.Accept();
    peer.Says(pending);
    const std::string endless(size_t{32} << 20, 'x');
    EXPECT_EQ(writer.Send(endless.data(), static_cast<int>(endless.size())), -1);
  }
}

TEST_F(SocketLayerTest, ConnectionThatNobodyTakesFailsInTime) {
  const Watchdog watchdog;
  constexpr size_t kMore = 300;  // than the system keeps for one who does not accept
  TcpLimits limits;
  limits.connectMs = 100;
  Peer peer;
  std::deque<TcpClientSocket> sockets;
  do {
    sockets.emplace_back(limits);
  } while (sockets.back().Connect("", peer.port()) && sockets.size() < kMore);
  EXPECT_LT(sockets.size(), kMore);
  EXPECT_FALSE(sockets.back().IsOpen());
  EXPECT_FALSE(TcpDeviceConnector(limits).Connect("127.0.0.1", peer.port()));
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

  ManualClock clock;
  UdpSearchSocket search{clock};
};

TEST_F(UdpSearchTest, RepeatedAnswersAreKeptAndLongOnesCut) {
  Start("10.77.1.2", true);
  simulator->InjectFault(0, nuvsim::ParseFault("duplicate,n=2"));
  simulator->InjectFault(0, nuvsim::ParseFault("foreign,text=" + std::string(300, '\xE9')));
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, 0), 1);
  ASSERT_EQ(search.replies().size(), 4U);
  EXPECT_EQ(search.replies()[0], std::wstring(255, L'\xE9')) << "a character per byte";
  EXPECT_EQ(search.replies()[1], search.replies()[3]);
  EXPECT_EQ(clock.SleptMs(), 100) << "before it reads";
}

TEST_F(UdpSearchTest, FailuresAreTold) {
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.88.1.1", "255.255.255.0", kPort, kWaitMs), 0)
      << "no way to that network";
  search.Close();
  EXPECT_EQ(search.BroadcastTo(kMessage, kLength, "10.77.1.1", "255.255.255.0", kPort, kWaitMs), 0);
  search.BroadcastAll(kMessage, kLength, kPort, kWaitMs);
  EXPECT_TRUE(search.replies().empty());
  EXPECT_EQ(clock.SleptMs(), 0);
}

}  // namespace
