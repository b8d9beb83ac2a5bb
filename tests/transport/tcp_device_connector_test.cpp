// The TCP connector against the simulator, on the loopback network.

#include "transport/tcp_device_connector.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <chrono>
#include <memory>

#include "nuvsim/simulator.h"
#include "tests/support/qt_warnings.h"

namespace {

using std::chrono::seconds;

constexpr int kReplyTimeoutMs = 6000;

class TcpDeviceConnectorTest : public ::testing::Test {
 protected:
  TcpDeviceConnectorTest() {
    ExpectNoQtWarnings();
    nuvsim::SimulatorConfig config;
    config.printers = {nuvsim::LoopbackPrinter(), nuvsim::LoopbackPrinter()};
    simulator = std::make_unique<nuvsim::Simulator>(std::move(config));
    simulator->Start();
  }

  bool Connect(size_t printer = 0) {
    return connector.Connect("127.0.0.1", simulator->TcpPort(printer));
  }
  TcpResult Send(const std::string& text) {
    return connector.Send(text.data(), static_cast<int64_t>(text.size()));
  }
  TcpResult Ask(const std::string& request, const std::string& expected = "") {
    const TcpResult sent = Send(request);
    return sent == TcpResult::kOk ? connector.Receive(expected, reply, kReplyTimeoutMs) : sent;
  }
  void Commits(nuvsim::FaultKind kind, const std::string& text = "") {
    nuvsim::Fault fault = nuvsim::MakeFault(kind);
    if (!text.empty()) fault.text = text;
    simulator->InjectFault(0, fault);
  }

  std::unique_ptr<nuvsim::Simulator> simulator;
  TcpDeviceConnector connector;
  std::string reply;
};

TEST_F(TcpDeviceConnectorTest, UnconnectedItDoesNothing) {
  EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
  EXPECT_EQ(connector.Receive("", reply, kReplyTimeoutMs), TcpResult::kNotConnected);
  connector.Disconnect();
  connector.DiscardInput();
  EXPECT_FALSE(connector.Connect("127.0.0.1", 1)) << "nobody listens there";
  EXPECT_FALSE(connector.Connect("", 1));
  EXPECT_FALSE(connector.Connect("localhost", simulator->TcpPort())) << "no name is looked up";
}

TEST_F(TcpDeviceConnectorTest, ConnectsToAnIPv6Address) {
  asio::io_context io;
  asio::ip::tcp::acceptor listening(io);
  asio::error_code error;
  listening.open(asio::ip::tcp::v6(), error);
  if (!error) listening.bind({asio::ip::address_v6::loopback(), 0}, error);
  if (error) GTEST_SKIP() << "no IPv6 here: " << error.message();
  listening.listen();
  EXPECT_TRUE(connector.Connect("::1", listening.local_endpoint().port()));
}

TEST_F(TcpDeviceConnectorTest, ExchangesTexts) {
  ASSERT_TRUE(Connect());
  EXPECT_EQ(Ask("F102\r\n"), TcpResult::kOk);
  EXPECT_EQ(reply, "F102 OK S:0\r\n");
  // A second connection replaces the first, which the printer then lets go.
  ASSERT_TRUE(Connect(1));
  EXPECT_EQ(Ask("F102\r\n"), TcpResult::kOk);
  EXPECT_TRUE(simulator->WaitUntil([&] { return !simulator->Status(0).connected; }, seconds(10)));
  connector.Disconnect();
  EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
}

TEST_F(TcpDeviceConnectorTest, ExpectedTextDecidesTheResult) {
  ASSERT_TRUE(Connect());
  reply = "before";
  EXPECT_EQ(Ask("F102\r\n", "S:7"), TcpResult::kUnexpected);
  Commits(nuvsim::FaultKind::kOtherCode, "E35");
  EXPECT_EQ(Ask("F102\r\n", "S:7"), TcpResult::kE35);
  EXPECT_EQ(reply, "before");
  Commits(nuvsim::FaultKind::kOtherCode, "E35");
  EXPECT_EQ(Ask("F102\r\n", "OK"), TcpResult::kOk);
  EXPECT_EQ(reply, "E35 OK S:0\r\n");
}

TEST_F(TcpDeviceConnectorTest, WaitsInWholeSlices) {
  ASSERT_TRUE(Connect());
  Send("F102\r\n");
  ASSERT_TRUE(simulator->WaitUntil([&] { return simulator->Totals().requests == 1; }, seconds(10)));
  // Even with the reply there: below one slice it does not read.
  for (const int32_t timeoutMs : {-1, 0, 599}) {
    EXPECT_EQ(connector.Receive("", reply, timeoutMs), TcpResult::kNoReply);
  }
  EXPECT_EQ(connector.Receive("", reply, kReplyTimeoutMs), TcpResult::kOk);
  EXPECT_EQ(connector.Receive("", reply, 600), TcpResult::kNoReply);
}

TEST_F(TcpDeviceConnectorTest, DroppedConnectionEndsTheWaitAtOnce) {
  for (const auto kind : {nuvsim::FaultKind::kDrop, nuvsim::FaultKind::kReset}) {
    ASSERT_TRUE(Connect());
    Commits(kind);
    // Would take ten slices if the loss went unnoticed; the test's own limit would catch a hang.
    EXPECT_EQ(Ask("F102\r\n"), TcpResult::kNoReply);
    EXPECT_EQ(Ask("F102\r\n"), TcpResult::kNotConnected);
  }
}

TEST_F(TcpDeviceConnectorTest, DiscardedRepliesDoNotAnswerTheNextRequest) {
  ASSERT_TRUE(Connect());
  Send("F101\r\n");
  Send("F197\r\n");
  ASSERT_TRUE(
      simulator->WaitUntil([&] { return simulator->Totals().answersSent == 2; }, seconds(10)));
  connector.DiscardInput();
  EXPECT_EQ(Ask("F102\r\n"), TcpResult::kOk);
  EXPECT_EQ(reply, "F102 OK S:0\r\n");
}

TEST_F(TcpDeviceConnectorTest, LongLineIsWrittenWhole) {
  ASSERT_TRUE(Connect());
  constexpr size_t kBytes = 8 << 20;
  ASSERT_EQ(Send(std::string(kBytes, 'x') + "\r\n"), TcpResult::kOk);
  connector.Disconnect();
  EXPECT_TRUE(simulator->WaitUntil([&] { return simulator->Totals().bytesReceived == kBytes + 2; },
                                   seconds(60)));
}

}  // namespace
