// What a client sees of each fault.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "fixture.h"

namespace NuvSim {
namespace {

using testing::ElementsAre;

const struct {
  const char* fault;
  const char* request;   // sent twice: the fault is armed once
  const char* received;  // up to the second, proper answer
} kFaults[] = {
    {"silent", "F103 S9 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:2|"},
    {"pieces,bytes=2,ms=1", "F102", "F102 OK S:0|F102 OK S:0|"},
    {"other-code", "F102", "F999 OK S:0|F102 OK S:0|"},
    {"answer,text=F102 OK S:7", "F102", "F102 OK S:7|F102 OK S:0|"},
    {"refuse", "F105",
     "F105 NG S:1 R:350 C:1001 V:500 Q:L0001|"
     "F105 OK S:1 R:350 C:1001 V:500 Q:L0001|"},
    {"bad-number,field=S", "F102", "F102 OK S:abc|F102 OK S:0|"},
    {"bad-number,field=V,text=99999999999", "F105",
     "F105 OK S:1 R:350 C:1001 V:99999999999 Q:L0001|F105 OK S:1 R:350 C:1001 V:500 Q:L0001|"},
    {"bad-number,field=C", "F102", "F102 OK S:0 C:abc|F102 OK S:0|"},
    {"bad-number,field=START,text=x", "F160 S1 C2",
     "F160 OK STARTx|F160 OK FINISH|F160 OK START|F160 OK FINISH|"},
    {"twice", "F102", "F102 OK S:0|F102 OK S:0|F102 OK S:0|"},
    {"buffer-full", "F117", "F117 OK S:0|F117 OK S:5000|"},
    {"buffer-full,code=503", "F503", "F503 OK S:0|F503 OK S:5000|"},
    {"refuse,code=102", "F102", "F102 NG S:0|F102 OK S:0|"},
};

TEST(FaultTest, ShowsOnceThenIsOver) {
  for (const auto& row : kFaults) {
    SCOPED_TRACE(row.fault);
    Bench bench([](PrinterConfig& printer) {
      printer.model = "Fabrix120 xP";  // an Android-board printer knows both queries of the buffer
      printer.bufferBytes = 5000;
    });
    bench.sim->InjectFault(0, ParseFault(row.fault));
    const auto client = bench.Connect();
    client->Send(std::string(row.request) + "\r\n" + row.request + "\r\nF197\r\n");
    std::string received;
    for (std::string line; line != "F197 OK N:Simulated printer";) {
      line = client->ReadLine();
      ASSERT_NE(line, "") << "after " << received;
      received += line + "|";
    }
    EXPECT_EQ(received, std::string(row.received) + "F197 OK N:Simulated printer|");
    EXPECT_EQ(bench.sim->Totals().faultsApplied, 1u);
    EXPECT_EQ(bench.sim->Status().armedFaults, 0u);
  }
}

TEST(EndFaultTest, EndsTheConnectionAndServesTheNext) {
  const struct {
    const char* fault;
    const char* sent;
    const char* received;
  } kRows[] = {
      {"drop,code=102", "F157\r\nF102\r\nF157\r\n", "F157 OK I0 S0\r\n (closed)"},
      {"reset", "F102\r\n", " (reset)"},
      {"drop-after,bytes=9", "F157\r\nF157\r\nF157\r\n", "F157 OK I0 S0\r\n (closed)"},
      {"reset-after,bytes=3", "F157\r\n", " (reset)"},
      {"gone-after,bytes=9", "F157\r\nF157\r\n", "F157 OK I0 S0\r\n (closed)"},
      {"drop-after,code=102,bytes=7", "F157\r\nF102\r\nF157\r\nF102\r\n",
       "F157 OK I0 S0\r\nF102 OK S:0\r\nF157 OK I0 S0\r\n (closed)"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.fault);
    Bench bench;
    bench.sim->InjectFault(0, ParseFault(row.fault));
    const auto client = bench.Connect();
    EXPECT_EQ(client->ReadToEnd(row.sent), row.received);
    const bool isGone = ParseFault(row.fault).kind == FaultKind::kGoneAfter;
    EXPECT_EQ(bench.sim->Status().plugged, !isGone);
    if (isGone) {
      EXPECT_THROW(bench.Connect(), std::system_error);
      bench.sim->Replug(0);
    }
    // The client may see its end first.
    EXPECT_TRUE(bench.WaitUntil([&] { return bench.sim->Totals().connectionsEnded == 1; }));
    EXPECT_EQ(bench.Connect()->Ask("F197"), "F197 OK N:Simulated printer");
    EXPECT_EQ(bench.sim->Totals().faultsApplied, 1u);
  }
}

TEST(FaultSequenceTest, FaultsArmedOneAfterTheOtherFollowEachOther) {
  Bench bench;
  for (const char* fault : {"refuse,count=2", "other-code,code=102", "silent,code=157,count=-1"}) {
    bench.sim->InjectFault(0, ParseFault(fault));
  }
  const auto client = bench.Connect();
  EXPECT_EQ(client->Ask("F102"), "F102 NG S:0");
  EXPECT_EQ(client->Ask("F197"), "F197 NG N:Simulated printer");
  EXPECT_EQ(client->Ask("F197"), "F197 OK N:Simulated printer");
  EXPECT_EQ(client->Ask("F102"), "F999 OK S:0");
  client->Send("F157\r\nF157\r\n");
  EXPECT_EQ(client->Ask("F102"), "F102 OK S:0");
  bench.sim->ClearFaults(0);
  EXPECT_EQ(client->Ask("F157"), "F157 OK I0 S0");
}

TEST(StallFaultTest, NothingMoreIsReadUntilItIsOverWhileAnswersAreSent) {
  for (const char* fault : {"stall,bytes=6", "stall,code=102", "stall,code=102,bytes=6"}) {
    SCOPED_TRACE(fault);
    Bench bench;
    bench.sim->InjectFault(0, ParseFault(fault));
    const auto client = bench.Connect();
    client->Send("F102\r\nF157\r\nF197\r\n");
    EXPECT_EQ(client->ReadLine(), "F102 OK S:0");
    ASSERT_TRUE(bench.WaitUntil([&] { return bench.sim->Totals().faultsApplied == 1; }));
    EXPECT_EQ(bench.sim->Requests().back(),
              fault == std::string("stall,code=102,bytes=6") ? "F157" : "F102");
    client->Close();
    bench.sim->ClearFaults(0);
    EXPECT_EQ(bench.Connect()->Ask("F102"), "F102 OK S:0");
    EXPECT_THAT(bench.sim->Requests(), ElementsAre("F102", "F157", "F197", "F102"));
  }
  Bench bench;
  bench.sim->InjectFault(0, ParseFault("stall,bytes=3,ms=5"));
  EXPECT_EQ(bench.Connect()->Ask("F102"), "F102 OK S:0");
}

TEST(FaultTextTest, EndlessGoesOnUntilTheClientIsGone) {
  Bench bench;
  Fault fault = ParseFault("endless,bytes=8");
  fault.text = std::string("a\0\r\n", 4);
  bench.sim->InjectFault(0, fault);
  const auto client = bench.Connect();
  client->Send("F102\r\n");
  for (int i = 0; i < 100; ++i) ASSERT_EQ(client->ReadLine(), std::string("a\0", 2));
  client->Close();
  EXPECT_EQ(bench.Connect()->Ask("F102"), "F102 OK S:0");
}

TEST(FaultTextTest, WhatIsNoFaultIsRefused) {
  for (const char* text :
       {"", "zap", "late,", "late,ms", "late,ms=x", "late,ms=-1", "late,bytes=3", "pieces,bytes=0",
        "silent,count=-2", "silent,code=99999999999", "bad-number", "late,ms=1,ms=2",
        "late,kind=silent", "burst,n=100001", "endless,bytes=65537", "stall,bytes=0",
        "drop-after,bytes=1.5", "nak,bytes=1"}) {
    EXPECT_THROW(ParseFault(text), ConfigError) << text;
  }
}

}  // namespace
}  // namespace NuvSim
