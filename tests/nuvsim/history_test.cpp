// The history of jobs, and the calendar that its times come from.

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "bench.h"

namespace nuvsim {
namespace {

using std::chrono::seconds;

class HistoryTest : public testing::Test {
 protected:
  void Expect(const std::string& request, const std::string& reply) {
    EXPECT_EQ(client_->Ask(request), reply) << request;
  }

  Bench bench_{[](PrinterConfig& printer) {
    printer.layerTime = seconds(60);
    printer.earlierJobs = {9, 2, 1};
  }};
  std::unique_ptr<RawClient> client_ = bench_.Connect();
};

TEST_F(HistoryTest, IsEmptyBeforeTheFirstJob) {
  Expect("F169 S0", "F169 OK S12 F9 C2 E1");
  Expect("F169 S1", "F169 OK S0 F0 C0 E0");
  Expect("F170", "F170 OK I0");
  Expect("F171 S0", "F171 OK");
  Expect("F171 S1", "F171 NG");
  for (const char* code : {"174", "175", "176", "177"}) {
    Expect(std::string("F") + code + " S1", std::string("F") + code + " NG");
  }
}

TEST_F(HistoryTest, TellsWhatWasAnnouncedAndHowTheJobEnded) {
  Expect("F103 S10 L3 T0.0506 R44.6 V12.5 C1.4996 E9.0004 H5 Y2 U3 P79.5", "F103 OK");
  Expect("F175 S1", "F175 OK L3 T45 V13 R3");
  Expect("F177 S1", "F177 OK T- QL0001");
  bench_.Pass(seconds(5));
  client_->Send("0123456789\r\n");
  ASSERT_TRUE(bench_.WaitUntil([&] { return bench_.sim->Status().layer == 1; }));
  Expect("F175 S1", "F175 OK L3 T45 V13 R3");
  bench_.Pass(seconds(200));  // longer than the three layers take
  Expect("F169 S1", "F169 OK S1 F1 C0 E0");
  Expect("F174 S1", "F174 OK NJob1 C1001 T20261121T103000");
  Expect("F175 S1", "F175 OK L3 T45 V13 R0");
  Expect("F176 S1", "F176 OK T51 E1500 B9000 P80");
  Expect("F177 S1", "F177 OK T20261121T103305 QL0001");

  Expect("F103 S10 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 OK");
  bench_.Pass(seconds(10));
  Expect("F104 S2", "F104 OK");
  bench_.Pass(seconds(10));
  Expect("F174 S2", "F174 OK NJob2 C1001 T20261121T103325");
  Expect("F175 S2", "F175 OK L1 T1 V1 R1");
  Expect("F177 S2", "F177 OK T20261121T103335 QL0001");
  Expect("F177 S1", "F177 OK T20261121T103305 QL0001");
  Expect("F169 S0", "F169 OK S14 F10 C3 E1");
  Expect("F169 S1", "F169 OK S2 F1 C1 E0");
  Expect("F157", "F157 OK I2 S0");
}

TEST_F(HistoryTest, RefusesWhatIsNotThere) {
  Expect("F103 S10 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 OK");
  for (const char* request : {"F174 S0", "F175 S2", "F176 S-1", "F177 Sx", "F174", "F175 S1 S1",
                              "F169 S2", "F169", "F171 S2", "F171 S-1", "F171"}) {
    Expect(request, std::string(request, 4) + " NG");
  }
  Expect("F171 S1", "F171 OK");
  Expect("F170", "F170 OK I1");
}

TEST_F(HistoryTest, HoldsAnnouncedAmountsWithinReason) {
  Expect("F103 S10 L1 T-1 R1e300 V1 C-2 E0 H1 Y1 U1 P1", "F103 OK");
  Expect("F175 S1", "F175 OK L1 T1000000000 V1 R3");
  Expect("F176 S1", "F176 OK T0 E0 B0 P1");
}

TEST(CalendarTest, TellsTheUtcTime) {
  struct Row {
    std::int64_t sinceEpoch;
    const char* text;
  };
  for (const Row& row : {Row{0, "19700101T000000"}, Row{1798720496, "20261231T123456"},
                         Row{1798761600, "20270101T000000"}, Row{1835481599, "20280229T235959"},
                         Row{4107542400, "21000301T000000"}}) {
    EXPECT_EQ(FormatTime(CalendarTime(seconds(row.sinceEpoch))), row.text);
  }
}

}  // namespace
}  // namespace nuvsim
