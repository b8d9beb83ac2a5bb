// How the printer treats its connections.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "fixture.h"

namespace NuvSim {
namespace {

using testing::ElementsAre;

TEST(ConnectionTest, FurtherClientsWaitForTheFirst) {
  Bench bench;
  const auto first = bench.Connect();
  const auto second = bench.Connect();
  second->Send("F197\r\n");
  EXPECT_EQ(first->Ask("F102"), "F102 OK S:0");
  EXPECT_EQ(bench.sim->Totals().connections, 1u);
  EXPECT_THAT(bench.sim->Requests(), ElementsAre("F102"));
  first->Close();
  EXPECT_EQ(second->ReadLine(), "F197 OK N:Simulated printer");
}

TEST(ConnectionTest, DataSentJustBeforeTheEndCountsBeforeTheNextClient) {
  Bench bench([](PrinterConfig& printer) { printer.bufferBytes = 64 << 20; });
  std::string sent;
  bench.Connect()->Ask("F103 S20000000 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1");
  for (int i = 0; i < 10; ++i) {
    const std::string line = std::string(1100000, static_cast<char>('a' + i)) + "\r\n";
    const auto client = bench.Connect();
    client->Send(line);
    client->Send("F117\r\n");  // its answer may find nobody
    client->Close();
    sent += line;
  }
  EXPECT_EQ(bench.Connect()->Ask("F157"), "F157 OK I1 S11000000");
  EXPECT_TRUE(bench.sim->JobBytes() == sent);
}

TEST(ConnectionTest, UnfinishedDataLineCountsWhenTheClientLeavesAndUnfinishedCommandDoesNot) {
  Bench bench;
  bench.Connect()->Send("G1 X5");
  bench.Connect()->Send("F104 S2");
  EXPECT_EQ(bench.Connect()->Ask("F102"), "F102 OK S:0");
  EXPECT_EQ(bench.sim->CommandText(), "G1 X5");
  EXPECT_THAT(bench.sim->Requests(), ElementsAre("F102"));
}

TEST(StartTest, FailsOnATakenPort) {
  Bench bench;
  SimulatorConfig config;
  config.printers = {LoopbackPrinter(), LoopbackPrinter()};
  config.printers[1].port = bench.sim->TcpPort();
  Simulator second(config);
  EXPECT_THROW(second.Start(), std::runtime_error);
  EXPECT_FALSE(second.Status(0).plugged);
}

}  // namespace
}  // namespace NuvSim
