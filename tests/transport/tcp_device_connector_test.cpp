// The TCP connector against a printer on the loopback network that does what no simulated one does.

#include "transport/tcp_device_connector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QNetworkProxy>
#include <chrono>
#include <memory>
#include <thread>

#include "tests/support/manual_clock.h"
#include "tests/support/peer.h"
#include "tests/support/qt_warnings.h"
#include "tests/support/told.h"
#include "tests/support/virtual_clock.h"
#include "transport/socket_system.h"

using namespace Nuv::Transport;
using ::testing::HasSubstr;

namespace {

constexpr int kReplyTimeoutMs = 6000;
constexpr int kLongMs = 60000;
constexpr size_t kEndless = size_t{32} << 20;  // more than the buffers of two sockets take

// Whoever takes a little now and then is waited for, but not for ever.
TEST(FinishWriteTest, AWriteEndsWhenNothingIsTakenOrTooLittle) {
  const auto socket = SocketSystem::Create(SocketSystem::Kind::kUdp);  // which takes always
  const struct {
    int64_t left;
    int64_t takes;  // in 20 s, -1: the connection ends
    WriteEnd end;
    int64_t seconds;
  } rows[] = {{6 << 16, 1 << 16, WriteEnd::kTaken, 120},
              {60 << 16, 0, WriteEnd::kNotTaken, 40},
              {6 << 16, 1 << 10, WriteEnd::kNotTaken, 160},
              {6, -1, WriteEnd::kLost, 20}};
  for (const auto& row : rows) {
    ManualClock clock;
    const Nuv::Platform::Waiter waiter(clock);
    TcpLimits limits;
    limits.stallMs = 30000;
    limits.per64KiBMs = 20000;
    int64_t left = row.left;
    int64_t rest = left;
    const auto take = [&] {
      clock.SleepFor(std::chrono::seconds(20));
      rest -= row.takes;
      return row.takes < 0 ? -1 : rest;
    };
    EXPECT_EQ(FinishWrite(socket, left, limits, waiter, take), row.end);
    EXPECT_EQ(clock.SleptMs(), row.seconds * 1000);
  }
  SocketSystem::Close(socket);
}

class TcpDeviceConnectorTest : public ::testing::Test {
 protected:
  TcpDeviceConnectorTest() {
    ExpectNoQtWarnings();
    limits.stallMs = 300;
  }

  void Connect(const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter()) {
    connector = std::make_unique<TcpDeviceConnector>(limits, waiter);
    ASSERT_TRUE(connector->Connect("127.0.0.1", peer.Port()));
    peer.Accept();
  }
  // From now on the connector's waits take no time.
  void ConnectInNoTime() {
    limits.stallMs = 30000;
    clock.SetPeer(nullptr);
    Connect(inNoTime);
    clock.SetPeer(&nobody);
  }
  TcpResult Send(const std::string& text, bool patient = false) {
    return connector->Send(text.data(), static_cast<int64_t>(text.size()), patient);
  }
  TcpResult Receive(const std::string& expected = "", int timeoutMs = kReplyTimeoutMs) {
    return connector->Receive(expected, reply, timeoutMs);
  }

  TcpLimits limits;
  Peer peer;
  IdlePeer nobody;
  VirtualClock clock;
  Nuv::Platform::Waiter inNoTime{clock};
  std::unique_ptr<TcpDeviceConnector> connector = std::make_unique<TcpDeviceConnector>();
  std::string reply;
};

TEST_F(TcpDeviceConnectorTest, UnconnectedItDoesNothing) {
  EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
  EXPECT_EQ(Receive(), TcpResult::kNotConnected);
  connector->Disconnect();
  connector->Discard();
  // Nobody listens on port 1, and no name is looked up.
  const uint16_t port = peer.Port();
  for (const auto& [address, number, why] :
       {std::tuple("127.0.0.1", uint16_t{1}, "connect to 127.0.0.1 port 1: "),
        {"", uint16_t{1}, "\"\" is no address"},
        {"localhost", port, "\"localhost\" is no address"}}) {
    const auto connect = [&, to = address, on = number] {
      EXPECT_FALSE(connector->Connect(to, on));
    };
    EXPECT_THAT(ToldBy(connect), HasSubstr(why));
  }
  EXPECT_TRUE(connector->Connect("127.0.0.1", port)) << "a failure is not its last word";
  EXPECT_FALSE(connector->Connect("127.0.0.1", 1));
  EXPECT_TRUE(connector->Connect("127.0.0.1", port)) << "nor behind a connection";
}

TEST_F(TcpDeviceConnectorTest, ConnectsToAnIPv6Address) {
  QTcpServer server;
  if (!server.listen(QHostAddress::LocalHostIPv6)) GTEST_SKIP() << "no IPv6 here";
  EXPECT_TRUE(connector->Connect("::1", server.serverPort()));
}

TEST_F(TcpDeviceConnectorTest, AProxyOfTheHostIsNoWayToAPrinter) {
  QTcpServer server;
  ASSERT_TRUE(server.listen(QHostAddress::AnyIPv4));
  QNetworkProxy::setApplicationProxy({QNetworkProxy::Socks5Proxy, "127.0.0.1", 1});
  EXPECT_TRUE(connector->Connect("10.77.1.1", server.serverPort()));
  QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
}

TEST_F(TcpDeviceConnectorTest, ExpectedTextDecidesTheResult) {
  Connect();
  for (const auto& [says, expected, result] :
       {std::tuple("F102 OK S:0\r\n", "S:7", TcpResult::kUnexpected),
        {"E35 OK S:0\r\n", "S:7", TcpResult::kE35},
        {"E35 OK S:0\r\n", "OK", TcpResult::kOk}}) {
    reply = "before";
    peer.Says(says);
    EXPECT_EQ(Receive(expected), result);
    EXPECT_EQ(reply, result == TcpResult::kOk ? says : "before");
  }
}

TEST_F(TcpDeviceConnectorTest, WaitsInWholeSlices) {
  Connect();
  peer.Says("F102 OK\r\n");
  // Even with the reply there: below one slice it does not read.
  for (const int timeoutMs : {-1, 0, 599}) {
    EXPECT_EQ(Receive("", timeoutMs), TcpResult::kNoReply);
  }
  EXPECT_EQ(Receive(), TcpResult::kOk);
  EXPECT_EQ(Receive("", 600), TcpResult::kNoReply);
  peer.Closes();
  // The end ends this wait before its limit, which the test's own would not let pass.
  EXPECT_EQ(Receive("", 100 * kLongMs), TcpResult::kNoReply);
  EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
}

TEST_F(TcpDeviceConnectorTest, LongLineIsWrittenWhole) {
  limits = {};  // the far end's thread may rest for longer than the others' limits
  Connect();
  std::thread reader([this] { EXPECT_EQ(peer.Reads(kEndless).size(), kEndless); });
  EXPECT_EQ(Send(std::string(kEndless, 'x')), TcpResult::kOk);
  reader.join();
}

TEST_F(TcpDeviceConnectorTest, SlowWriteEndsToo) {
  limits.stallMs = 600;
  limits.per64KiBMs = 0;
  Connect();
  std::thread reader([this] {
    while (!peer.Reads(65536).empty()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  });
  EXPECT_EQ(Send(std::string(kEndless, 'x'), true), TcpResult::kNotSent);
  EXPECT_EQ(connector->Look(), LinkState::kAlive) << "it did take bytes";
  connector->Disconnect();
  reader.join();
}

TEST_F(TcpDeviceConnectorTest, ImageIsWrittenWholeThoughThePrinterStalls) {
  Connect();
  const auto block = [](size_t number) {
    return std::string(10240, static_cast<char>('a' + number % 26));
  };
  std::string image;
  size_t blocks = 0;
  for (int stall = 0; stall < 2; ++stall) {
    const size_t before = image.size();
    TcpResult result = TcpResult::kOk;
    while (result == TcpResult::kOk) {
      image += block(blocks);
      result = Send(block(blocks++), true);
    }
    EXPECT_EQ(result, TcpResult::kNotSent);
    EXPECT_EQ(connector->Look(), LinkState::kAlive);
    const std::string taken = peer.Reads(image.size() - before - block(0).size());
    EXPECT_EQ(taken, image.substr(before - (stall == 0 ? 0 : block(0).size()), taken.size()));
  }
  // What the last block still waits for goes out without further bytes.
  EXPECT_EQ(Send("", true), TcpResult::kOk);
  connector->Disconnect();
  EXPECT_EQ(peer.Reads(kEndless), block(blocks - 2) + block(blocks - 1));
}

TEST_F(TcpDeviceConnectorTest, SecondStallOfAnImageInARowIsTheLast) {
  ConnectInNoTime();
  EXPECT_EQ(Send(std::string(kEndless, 'x'), true), TcpResult::kNotSent);
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(Send("x", true), TcpResult::kNotSent); }),
              HasSubstr("bytes not taken"));
  EXPECT_EQ(Send("x", true), TcpResult::kNotConnected);
  EXPECT_EQ(clock.NowMs(), 2 * limits.stallMs);
}

TEST_F(TcpDeviceConnectorTest, OfAReplyTheLimitIsKept) {
  const std::string longReply = std::string(10000, 'x') + "\r\n";
  for (const size_t most : {limits.replyBytes, size_t{5000}}) {
    limits.replyBytes = most;
    Connect();
    peer.Says(longReply);
    const std::string told = ToldBy([&] { ASSERT_EQ(Receive(), TcpResult::kOk); });
    EXPECT_EQ(reply, longReply.substr(0, most));
    EXPECT_EQ(told, most < longReply.size()
                        ? "[NKG]reply longer than 5000 bytes: 5002 thrown away\n"
                        : "");
    EXPECT_FALSE(connector->Discard()) << "the rest is gone";
  }
}

TEST_F(TcpDeviceConnectorTest, PrinterWhoseReplyDoesNotEndIsDropped) {
  limits.replyBytes = 1;
  for (const auto& [most, state] :
       {std::pair(20000, LinkState::kAlive), {10000, LinkState::kEnded}}) {
    limits.discardBytes = static_cast<size_t>(most);
    Connect();
    peer.Says(std::string(15000, 'x'));
    EXPECT_EQ(ToldBy([&] { EXPECT_EQ(Receive(), TcpResult::kOk); }).find("sends without a pause") !=
                  std::string::npos,
              state == LinkState::kEnded);
    EXPECT_EQ(connector->Look(), state);
  }
}

}  // namespace
