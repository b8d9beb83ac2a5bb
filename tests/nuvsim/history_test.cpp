// The history of jobs, and the calendar that its times come from.

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "fixture.h"

namespace NuvSim {
namespace {

using std::chrono::seconds;

TEST(HistoryTest, TellsWhatWasAnnouncedAndHowTheJobEnded) {
  Bench bench([](PrinterConfig& printer) {
    printer.layerTime = seconds(60);
    printer.earlierJobs = {9, 2, 1};
  });
  const auto client = bench.Connect();
  const auto expect = [&client](const std::string& request, const std::string& reply) {
    EXPECT_EQ(client->Ask(request), reply) << request;
  };
  expect("F103 S10 L3 T0.0506 R44.6 V12.5 C1.4996 E9.0004 H5 Y2 U3 P79.5", "F103 OK");
  expect("F175 S1", "F175 OK L3 T45 V13 R3");
  expect("F177 S1", "F177 OK T- QL0001");
  bench.Pass(seconds(5));
  client->Send("0123456789\r\n");
  ASSERT_TRUE(bench.WaitUntil([&] { return bench.sim->Status().layer == 1; }));
  expect("F175 S1", "F175 OK L3 T45 V13 R3");
  bench.Pass(seconds(200));  // longer than the three layers take
  expect("F169 S1", "F169 OK S1 F1 C0 E0");
  expect("F174 S1", "F174 OK NJob1 C1001 T20261121T103000");
  expect("F175 S1", "F175 OK L3 T45 V13 R0");
  expect("F176 S1", "F176 OK T51 E1500 B9000 P80");
  expect("F177 S1", "F177 OK T20261121T103305 QL0001");

  expect("F103 S10 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 OK");
  bench.Pass(seconds(10));
  expect("F104 S2", "F104 OK");
  bench.Pass(seconds(10));
  expect("F175 S2", "F175 OK L1 T1 V1 R1");
  expect("F177 S2", "F177 OK T20261121T103335 QL0001");
  expect("F169 S0", "F169 OK S14 F10 C3 E1");
  expect("F169 S1", "F169 OK S2 F1 C1 E0");
  expect("F157", "F157 OK I2 S0");
}

TEST(CalendarTest, TellsTheUtcTime) {
  const std::pair<int64_t, std::string> kRows[] = {{0, "19700101T000000"},
                                                   {1798761600, "20270101T000000"},
                                                   {1835481599, "20280229T235959"},
                                                   {4107542400, "21000301T000000"}};
  for (const auto& [sinceEpoch, text] : kRows) {
    Bench bench;
    bench.Pass(seconds(sinceEpoch - kBenchStart));
    const auto client = bench.Connect();
    client->Send(JobRequest(1));
    EXPECT_EQ(client->ReadLine(), "F103 OK");
    EXPECT_EQ(client->Ask("F174 S1"), "F174 OK NJob1 C1001 T" + text);
  }
}

}  // namespace
}  // namespace NuvSim
