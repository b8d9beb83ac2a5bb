// What the printer answers to each command.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "bench.h"

namespace nuvsim {
namespace {

using std::chrono::milliseconds;

struct ReplyRow {
  const char* what;
  std::function<void(Bench&, RawClient&)> before;
  const char* request;
  const char* reply;
};

class ReplyTest : public testing::TestWithParam<ReplyRow> {};

TEST_P(ReplyTest, IsAsOnThePrinter) {
  Bench bench([](PrinterConfig& printer) {
    printer.layerTime = milliseconds(1000);
    printer.bufferBytes = 5000;
    printer.drainRate = 0;
  });
  const auto client = bench.Connect();
  if (GetParam().before) GetParam().before(bench, *client);
  EXPECT_EQ(client->Ask(GetParam().request), GetParam().reply);
}

void Receiving(Bench&, RawClient& client) {
  client.Send(JobRequest(100) + "0123456789\r\n");
  ASSERT_EQ(client.ReadLine(), "F103 OK");
}

// Third of four layers.
void Printing(Bench& bench, RawClient& client) {
  client.Send(JobRequest(10));
  ASSERT_EQ(client.ReadLine(), "F103 OK");
  client.Ask("F117");  // of a dental job, the header ends here
  client.Send("0123456789\r\n");
  ASSERT_TRUE(bench.WaitUntil([&] { return bench.sim->Status().state == State::kPrinting; }));
  bench.Pass(milliseconds(2500));
}

void InError(Bench& bench, RawClient&) { bench.sim->SetError(0, 17); }

const ReplyRow kReplies[] = {
    {"Identity", nullptr, "F101",
     "F101 OK V:1.0.0 N:nuvsim M:Zafel Superfine S:SIM0000000001 C:1.0"},
    {"IdentityPrinting", Printing, "F101",
     "F101 OK V:1.0.0 N:nuvsim M:Zafel Superfine S:SIM0000000001 C:1.0 S:1 L:3 T:5 R:Printing"},
    {"StateIdle", nullptr, "F102", "F102 OK S:0"},
    {"StateReceiving", Receiving, "F102", "F102 OK S:2"},
    {"StatePrinting", Printing, "F102", "F102 OK S:1 L:3 T:5 C:50% R:Job1"},
    {"StateError", InError, "F102", "F102 OK S:3 E:17"},
    {"StateErrorCleared",
     [](Bench& bench, RawClient&) {
       bench.sim->SetError(0, 17);
       bench.sim->ClearError(0);
     },
     "F102", "F102 OK S:0"},
    {"StateSetIdle",
     [](Bench& bench, RawClient& client) {
       Printing(bench, client);
       bench.sim->SetIdle(0);
     },
     "F102", "F102 OK S:0"},
    {"JobWhileReceiving", Receiving, "F103 S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:2"},
    {"JobWhilePrinting", Printing, "F103 S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:1"},
    {"JobInError", InError, "F103 S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:3"},
    {"JobParameterMissing", nullptr, "F103 S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1", "F103 NG S:0"},
    {"JobParameterTooMany", nullptr, "F103 S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1 N1", "F103 NG S:0"},
    {"JobOutOfOrder", nullptr, "F103 L1 S1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:0"},
    {"JobNoNumber", nullptr, "F103 S1 L1 T1 R1 V1 C1 Ex H1 Y1 U1 P1", "F103 NG S:0"},
    {"JobNotFinite", nullptr, "F103 S1 L1 T1 Rinf V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:0"},
    {"JobNoWholeSize", nullptr, "F103 S1.5 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:0"},
    {"JobNegativeLayers", nullptr, "F103 S1 L-1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:0"},
    {"AbandonIdle", nullptr, "F104 S2", "F104 OK"},
    {"AbandonOtherForm", nullptr, "F104 S1", "F104 NG"},
    {"AbandonNoParameter", nullptr, "F104", "F104 NG"},
    {"AbandonTooMany", nullptr, "F104 S2 S2", "F104 NG"},
    {"Resin", nullptr, "F105", "F105 OK S:1 R:350 C:1001 V:500 Q:L0001"},
    {"ResinRefused", [](Bench& bench, RawClient&) { bench.sim->SetResinRefusal(0, 3); }, "F105",
     "F105 NG S:3"},
    {"TotalsNoJob", nullptr, "F107", "F107 OK L:0 T:0"},
    {"Totals", Printing, "F107", "F107 OK L:4 T:10 R:Job1"},
    {"FreeBuffer", nullptr, "F117", "F117 OK S:5000"},
    {"FreeBufferPartlyFilled", Receiving, "F117", "F117 OK S:4988"},
    {"ReceiptNoJob", nullptr, "F157", "F157 OK I0 S0"},
    {"Receipt", Receiving, "F157", "F157 OK I1 S10"},
    {"Nickname", nullptr, "F197", "F197 OK N:Simulated printer"},
    {"UnknownCode", nullptr, "F998 S1", "F998 NG"},
    {"CodeTooLarge", nullptr, "F99999999999", "F99999999999 NG"},
    {"CodeWithTail", nullptr, "F101x", "F101 NG"},
    {"RunsOfBlanks", nullptr, "F104   S2  ", "F104 OK"},
};

INSTANTIATE_TEST_SUITE_P(Each, ReplyTest, testing::ValuesIn(kReplies),
                         [](const auto& row) { return row.param.what; });

TEST(DentalModelTest, TellsItsProgressInItsOwnQueriesToo) {
  Bench bench([](PrinterConfig& printer) {
    printer.model = "BEGO VARSEO XS";
    printer.layerTime = milliseconds(1000);
  });
  const auto client = bench.Connect();
  Printing(bench, *client);
  EXPECT_EQ(client->Ask("F353"), "F353 OK S:1 M:512");
  EXPECT_EQ(client->Ask("F354"),
            "F354 OK V:1.0.0 N:nuvsim M:BEGO VARSEO XS S:SIM0000000001 C:1.0 D:20240131 L:3 T:5 "
            "R:Printing");
}

}  // namespace
}  // namespace nuvsim
