// Queries against the simulator: what they read, and how every fault of a printer ends.

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/connect/lab.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using Errors = std::vector<std::pair<int, int>>;

class QueriesTest : public Lab {
 protected:
  int Status() {
    status = 77;
    return framework.GetPrinterStatus(&status);
  }

  int status = 0;
};

TEST_F(QueriesTest, IdentityAndIdleState) {
  auto printer = Printer("A1", "Zafel 10A EngVer");
  printer.firmware = "2.5";
  printer.controllerVersion = "9.1";
  StartConnected(printer);
  std::string version, name, model, serial, controller;
  EXPECT_EQ(framework.GetPrinterInfo(version, name, model, serial, controller), NUV_OK);
  EXPECT_THAT((std::vector{version, name, model, serial, controller}),
              ElementsAre("2.5", "printer-A1", "Zafel 10A EngVer", "A1", "9.1"));
  EXPECT_EQ(Status(), NUV_OK);
  EXPECT_EQ(status, NUV_PRINTER_IDLE);
  int layer = 7, progress = 7, minutes = 7;
  EXPECT_EQ(framework.GetPrintingStatus(&layer, &progress, &minutes), NUV_NOT_PRINTING);
  EXPECT_THAT((std::vector{layer, progress, minutes}), ElementsAre(7, 7, 7));
  EXPECT_EQ(errors(), (Errors{{22, 102}}));
}

TEST_F(QueriesTest, ErrorNumberOnlyInTheErrorState) {
  StartConnected(Printer("A1"));
  int errorCode = 7;
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &errorCode), NUV_OK);
  EXPECT_EQ(errorCode, 7);
  simulator->SetError(0, 42);
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &errorCode), NUV_OK);
  EXPECT_EQ(status, NUV_PRINTER_ERROR);
  EXPECT_EQ(errorCode, 42);
}

TEST_F(QueriesTest, RunningPrintReportsItsProgress) {
  auto printer = Printer("A1");
  printer.layerTime = std::chrono::hours(1);
  StartConnected(printer);
  std::map<std::string, std::string> reply;
  const std::vector<std::string> job = {"4", "10", "0.05", "90", "1", "1", "1", "1", "1", "1", "1"};
  ASSERT_EQ(framework.ExecuteCommand(103, job, reply), NUV_OK);
  EXPECT_EQ(Status(), NUV_OK);
  EXPECT_EQ(status, NUV_PRINTER_RECEIVING);
  int errorCode = 7;
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &errorCode), NUV_OK);
  EXPECT_EQ(errorCode, 7) << "a state that is no error leaves it alone";
  const std::string line = "data\r\n";
  ASSERT_TRUE(framework.GetConnect()->SendBytes({line.begin(), line.end()}));
  ASSERT_TRUE(
      simulator->WaitUntil([&] { return simulator->Status().state == nuvsim::State::kPrinting; },
                           std::chrono::seconds(10)));
  int layer = 0, progress = -1, minutes = 0;
  EXPECT_EQ(framework.GetPrintingStatus(&layer, &progress, &minutes), NUV_OK);
  EXPECT_EQ(layer, 1);
  EXPECT_EQ(progress, 0);
  EXPECT_GT(minutes, 0);
  int total = 0;
  EXPECT_EQ(framework.GetTotalLayerAndTime(&total, &minutes), NUV_OK);
  EXPECT_EQ(total, 10);
  EXPECT_EQ(minutes, 90);
  int index = 0, size = 0;
  EXPECT_EQ(framework.GetCurrJobIndexAndTotalSize(&index, &size), NUV_OK);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(size, 4);
}

TEST_F(QueriesTest, ProgressIsTheNumberBeforeThePercentSign) {
  StartConnected(Printer("A1"));
  struct Row {
    const char* reply;
    int progress;  // -1: the conversion fails
  };
  for (const Row& row : {Row{"F102 OK S:1 C:45%", 45},
                         {"F102 OK S:1 C:45", 45},
                         {"F102 OK S:1 C:45%60", 45},
                         {"F102 OK S:1", -1},
                         {"F102 OK S:1 C:%", -1}}) {
    SCOPED_TRACE(row.reply);
    // Everything behind the replaced head is out of the first token's place.
    Commits(std::string("other-code,code=102,text=") + row.reply);
    int layer = 0, progress = 0, minutes = 0;
    if (row.progress < 0) {
      EXPECT_THROW(framework.GetPrintingStatus(&layer, &progress, &minutes), std::invalid_argument);
    } else {
      EXPECT_EQ(framework.GetPrintingStatus(&layer, &progress, &minutes), NUV_OK);
      EXPECT_EQ(progress, row.progress);
    }
  }
}

TEST_F(QueriesTest, ResinAndItsRefusals) {
  auto printer = Printer("A1");
  printer.resin.state = 1;
  printer.resin.remainingMl = 120;
  printer.resin.code = "DP-7";
  printer.resin.tankMl = 500;
  printer.resin.lot = "L77";
  StartConnected(printer);
  int state = 0, remaining = 0, tank = 0;
  std::string code, lot;
  EXPECT_EQ(framework.GetResinInfo2(&state, &remaining, code, &tank, lot), NUV_OK);
  EXPECT_THAT((std::vector{state, remaining, tank}), ElementsAre(1, 120, 500));
  EXPECT_EQ(code, "DP-7");
  EXPECT_EQ(lot, "L77");
  const std::pair<int, int> refusals[] = {{0, 12}, {1, 13}, {2, 11}, {3, 14}, {4, 10}, {5, 1}};
  for (const auto& [refusal, result] : refusals) {
    simulator->SetResinRefusal(0, refusal);
    errors().clear();
    EXPECT_EQ(framework.GetResinInfo2(&state, &remaining, code, &tank, lot), result);
    EXPECT_THAT((std::vector{state, remaining, tank}), ElementsAre(0, 0, 0));
    EXPECT_EQ(code + lot, "");
    EXPECT_EQ(errors(), (Errors{{result, 105}}));
  }
  simulator->SetResinRefusal(0, std::nullopt);
}

TEST_F(QueriesTest, OperationWithoutExportRunsAnyCommand) {
  StartConnected(Printer("A1"));
  std::map<std::string, std::string> reply{{"old", "x"}};
  EXPECT_EQ(framework.ExecuteCommand(157, {}, reply), NUV_OK);
  EXPECT_EQ(reply, (std::map<std::string, std::string>{{"I", "0"}, {"S", "0"}}));
  EXPECT_EQ(framework.ExecuteCommand(104, {"9"}, reply), NUV_PRINTER_REFUSED);
  EXPECT_EQ(framework.ExecuteCommand(140, {}, reply), NUV_FAILED) << "not the factory's";
  EXPECT_EQ(framework.ExecuteCommand(104, {"2\r\nF104 S2"}, reply), NUV_FAILED);
  EXPECT_TRUE(reply.empty());
  EXPECT_EQ(errors(), (Errors{{29, 104}, {1, 140}, {1, 104}}));
}

// A printer's fault, its code, and that the command after it works again.
TEST_F(QueriesTest, EveryFaultEndsInItsCodeAndTheNextCommandWorks) {
  struct Row {
    const char* fault;
    int result;
    bool reopen;  // lost, or a late reply is still on its way
  };
  const Row rows[] = {
      {"silent,code=102", NUV_OK, false},  // the resend is answered
      {"silent,code=102,count=3", NUV_FAILED, false},
      {"late,code=102,ms=100", NUV_OK, false},
      {"late,code=102,ms=900", NUV_OK, true},
      {"other-code,code=102", NUV_FAILED, false},
      {"refuse,code=102", NUV_PRINTER_REFUSED, false},
      {"twice,code=102", NUV_OK, false},
      {"oversized,code=102,kib=64", NUV_OK, false},
      {"drop,code=102", NUV_FAILED, true},
      {"reset,code=102", NUV_FAILED, true},
      {"drop-after,bytes=3", NUV_FAILED, true},
      {"reset-after,bytes=3", NUV_FAILED, true},
  };
  StartConnected(Printer("A1"));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    errors().clear();
    Commits(row.fault);
    EXPECT_EQ(Status(), row.result);
    EXPECT_EQ(status, row.result == NUV_OK ? 0 : -1);
    EXPECT_EQ(errors(), row.result == NUV_OK ? Errors{} : (Errors{{row.result, 102}}));
    simulator->ClearFaults(0);
    if (row.reopen) {
      EXPECT_TRUE(framework.GetConnect()->OpenDevice());
    }
    EXPECT_EQ(NameOfCurrent(), "printer-A1");
    EXPECT_EQ(Status(), NUV_OK);
  }
}

TEST_F(QueriesTest, GarbageEndsInAnErrorTheHostCanCatch) {
  StartConnected(Printer("A1"));
  Commits("bad-number,code=102,field=S");
  EXPECT_THROW(Status(), std::invalid_argument);
  EXPECT_EQ(status, -1);
  Commits("bad-number,code=102,field=S,text=99999999999");
  EXPECT_THROW(Status(), std::out_of_range);
  // Bytes that are no text: refused, unanswered or malformed, but never a state.
  Commits("garbage,code=102,bytes=300,count=4");
  try {
    EXPECT_NE(Status(), NUV_OK);
  } catch (const std::invalid_argument&) {
  }
  EXPECT_EQ(status, -1);
  simulator->ClearFaults(0);
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
}

// Pieces that arrive apart are cut at the first; the transaction recovers or fails in its bounds.
TEST_F(QueriesTest, ReplyInPiecesEndsWithinItsBounds) {
  StartConnected(Printer("A1"));
  for (const char* fault :
       {"pieces,code=102,bytes=1,ms=1,count=-1", "pieces,code=102,bytes=4,ms=30"}) {
    SCOPED_TRACE(fault);
    Commits(fault);
    try {
      const int result = Status();
      EXPECT_TRUE(result == NUV_OK || result == NUV_FAILED || result == NUV_PRINTER_REFUSED)
          << result;
    } catch (const std::invalid_argument&) {
      // The first piece was no more than the "F" of the head.
    }
    simulator->ClearFaults(0);
    // The rest of the pieces may still be coming in behind the next request.
    ASSERT_TRUE(framework.GetConnect()->OpenDevice());
    EXPECT_EQ(NameOfCurrent(), "printer-A1");
  }
}

}  // namespace
}  // namespace Nuv::Connect
