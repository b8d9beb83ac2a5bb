// The TCP connector on the loopback network, against the simulator and against worse printers.

#include "transport/tcp_device_connector.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "nuvsim/simulator.h"
#include "tests/support/qt_warnings.h"
#include "tests/support/virtual_clock.h"
#include "tests/transport/peer.h"

using namespace Nuv::Transport;

namespace {

using std::chrono::seconds;

constexpr int kReplyTimeoutMs = 6000;

class TcpDeviceConnectorTest : public ::testing::Test {
 protected:
  TcpDeviceConnectorTest() {
    ExpectNoQtWarnings();
    NuvSim::SimulatorConfig config;
    config.printers = {NuvSim::LoopbackPrinter(), NuvSim::LoopbackPrinter()};
    simulator = std::make_unique<NuvSim::Simulator>(std::move(config));
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
  void Commits(NuvSim::FaultKind kind, const std::string& text = "") {
    NuvSim::Fault fault = NuvSim::MakeFault(kind);
    if (!text.empty()) fault.text = text;
    simulator->InjectFault(0, fault);
  }

  std::unique_ptr<NuvSim::Simulator> simulator;
  TcpDeviceConnector connector;
  std::string reply;
};

TEST_F(TcpDeviceConnectorTest, UnconnectedItDoesNothing) {
  EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
  EXPECT_EQ(connector.Receive("", reply, kReplyTimeoutMs), TcpResult::kNotConnected);
  connector.Disconnect();
  connector.Discard();
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
  Commits(NuvSim::FaultKind::kOtherCode, "E35");
  EXPECT_EQ(Ask("F102\r\n", "S:7"), TcpResult::kE35);
  EXPECT_EQ(reply, "before");
  Commits(NuvSim::FaultKind::kOtherCode, "E35");
  EXPECT_EQ(Ask("F102\r\n", "OK"), TcpResult::kOk);
  EXPECT_EQ(reply, "E35 OK S:0\r\n");
}

TEST_F(TcpDeviceConnectorTest, WaitsInWholeSlices) {
  ASSERT_TRUE(Connect());
  Send("F102\r\n");
  ASSERT_TRUE(simulator->WaitUntil([&] { return simulator->Totals().requests == 1; }, seconds(10)));
  // Even with the reply there: below one slice it does not read.
  for (const int timeoutMs : {-1, 0, 599}) {
    EXPECT_EQ(connector.Receive("", reply, timeoutMs), TcpResult::kNoReply);
  }
  EXPECT_EQ(connector.Receive("", reply, kReplyTimeoutMs), TcpResult::kOk);
  EXPECT_EQ(connector.Receive("", reply, 600), TcpResult::kNoReply);
}

TEST_F(TcpDeviceConnectorTest, DroppedConnectionEndsTheWaitAtOnce) {
  for (const auto kind : {NuvSim::FaultKind::kDrop, NuvSim::FaultKind::kReset}) {
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
  connector.Discard();
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

// More than the buffers of two sockets take.
constexpr size_t kEndless = size_t{32} << 20;

class BadPrinterTest : public ::testing::Test {
 protected:
  BadPrinterTest() {
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

  TcpLimits limits;
  Peer peer;
  IdlePeer nobody;
  VirtualClock clock;
  Nuv::Platform::Waiter inNoTime{clock};
  std::unique_ptr<TcpDeviceConnector> connector;
  std::string reply;
};

TEST_F(BadPrinterTest, WriteThatIsNotTakenDropsTheConnection) {
  // A printer that acknowledged something before it stopped reading made the wait spin.
  for (const char* const pending : {"", "L100 OK\r\n"}) {
    ConnectInNoTime();
    peer.Says(pending);
    EXPECT_EQ(Send(std::string(kEndless, 'x')), TcpResult::kNotSent);
    EXPECT_EQ(Send("F102\r\n"), TcpResult::kNotConnected);
    EXPECT_EQ(connector->Look(), LinkState::kClosed) << "by this side";
  }
}

TEST_F(BadPrinterTest, SlowWriteEndsToo) {
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

TEST_F(BadPrinterTest, ImageIsWrittenWholeThoughThePrinterStalls) {
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

TEST_F(BadPrinterTest, SecondStallOfAnImageInARowIsTheLast) {
  ConnectInNoTime();
  EXPECT_EQ(Send(std::string(kEndless, 'x'), true), TcpResult::kNotSent);
  EXPECT_EQ(Send("x", true), TcpResult::kNotSent);
  EXPECT_EQ(Send("x", true), TcpResult::kNotConnected);
  EXPECT_EQ(clock.NowMs(), 2 * limits.stallMs);
}

TEST_F(BadPrinterTest, OfAReplyTheLimitIsKept) {
  const std::string longReply = std::string(10000, 'x') + "\r\n";
  for (const size_t most : {limits.replyBytes, size_t{5000}}) {
    limits.replyBytes = most;
    Connect();
    peer.Says(longReply);
    ASSERT_EQ(connector->Receive("", reply, kReplyTimeoutMs), TcpResult::kOk);
    EXPECT_EQ(reply, longReply.substr(0, most));
    EXPECT_FALSE(connector->Discard()) << "the rest is gone";
  }
}

TEST_F(BadPrinterTest, PrinterThatSendsWithoutAPauseIsDropped) {
  constexpr int kLongMs = 60000;
  const struct {
    int discardMs;
    size_t discardBytes;
    LinkState state;
  } kRows[] = {
      {kLongMs, 20000, LinkState::kAlive},
      {kLongMs, 10000, LinkState::kEnded},
      {0, 20000, LinkState::kEnded},
  };
  for (const auto& row : kRows) {
    limits.discardMs = row.discardMs;
    limits.discardBytes = row.discardBytes;
    limits.replyBytes = 1;
    for (const bool isReply : {false, true}) {
      Connect();
      peer.Says(std::string(15000, 'x'));
      if (isReply) {
        EXPECT_EQ(connector->Receive("", reply, kReplyTimeoutMs), TcpResult::kOk);
      } else {
        EXPECT_TRUE(connector->Discard());
      }
      EXPECT_EQ(connector->Look(), row.state);
    }
  }
}

TEST_F(BadPrinterTest, LookTellsAnEndBehindWhatCameUnasked) {
  connector = std::make_unique<TcpDeviceConnector>();
  EXPECT_EQ(connector->Look(), LinkState::kClosed);
  Connect();
  EXPECT_EQ(connector->Look(), LinkState::kAlive);
  peer.Says("late\r\n");
  EXPECT_EQ(connector->Look(), LinkState::kAlive);
  EXPECT_FALSE(connector->Discard()) << "it is read away";
  peer.Says("late\r\n");
  peer.Closes();
  for (int look = 0; look < 2; ++look) EXPECT_EQ(connector->Look(), LinkState::kEnded);
  connector->Disconnect();
  EXPECT_EQ(connector->Look(), LinkState::kClosed);
}

TEST_F(BadPrinterTest, DiscardsUntilQuiet) {
  constexpr int kLongMs = 60000;
  Connect();
  EXPECT_FALSE(connector->Discard(1, kLongMs));
  std::thread printer([this] {
    for (int piece = 0; piece < 5; ++piece) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      peer.Says("late");
    }
    peer.Closes();
  });
  // Only the end of the connection ends this wait before its limits.
  EXPECT_TRUE(connector->Discard(kLongMs, kLongMs));
  EXPECT_EQ(connector->Look(), LinkState::kEnded);
  printer.join();

  Connect();
  std::atomic<bool> over{false};
  std::thread drips([&] {
    for (int piece = 0; piece < 1000 && !over; ++piece) {
      peer.Says("x");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(over) << "it went on as long as the printer did";
  });
  EXPECT_TRUE(connector->Discard(kLongMs, 50));
  over = true;
  drips.join();
}

}  // namespace
