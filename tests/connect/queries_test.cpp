// Queries against the simulator: what they read, and how every fault of a printer ends.

#include <gmock/gmock.h>

#include <stdexcept>

#include "tests/connect/lab.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ErrorList = std::vector<std::pair<int, int>>;

class QueriesTest : public Lab {
 protected:
  int Status() {
    status = 77;
    return framework.GetPrinterStatus(&status);
  }

  int status = 0;
};

TEST_F(QueriesTest, RunningPrintReportsItsProgress) {
  auto printer = Printer("A1");
  printer.layerTime = std::chrono::hours(1);
  StartConnected(printer);
  int layer = 7, progress = 7, minutes = 7;
  EXPECT_EQ(framework.GetPrintingStatus(&layer, &progress, &minutes), NUV_NOT_PRINTING);
  EXPECT_THAT((std::vector{layer, progress, minutes}), ElementsAre(7, 7, 7));
  EXPECT_EQ(Errors(), (ErrorList{{22, 102}}));
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
  ASSERT_TRUE(Becomes([&] { return simulator->Status().state == NuvSim::State::kPrinting; }));
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
  simulator->SetError(0, 42);
  EXPECT_EQ(framework.GetPrinterStatusWithErrorCode(&status, &errorCode), NUV_OK);
  EXPECT_EQ(status, NUV_PRINTER_ERROR);
  EXPECT_EQ(errorCode, 42);
}

TEST_F(QueriesTest, ProgressIsTheNumberBeforeThePercentSign) {
  StartConnected(Printer("A1"));
  struct Row {
    const char* reply;
    int progress;  // -1: the conversion fails
  };
  for (const Row& row : {Row{"F102 OK S:1 L:9 T:9 C:45%", 45},
                         {"F102 OK S:1 C:45", 45},
                         {"F102 OK S:1 C:45%60", 45},
                         {"F102 OK S:1 L:9 T:9", -1},
                         {"F102 OK S:1 C:%", -1}}) {
    SCOPED_TRACE(row.reply);
    // Everything behind the replaced head is out of the first token's place.
    Commits(std::string("other-code,code=102,text=") + row.reply);
    int layer = 0, progress = 0, minutes = 0;
    if (row.progress < 0) {
      EXPECT_THROW(framework.GetPrintingStatus(&layer, &progress, &minutes), std::invalid_argument);
      EXPECT_EQ(layer + minutes, 0) << "left as after every failure";
    } else {
      EXPECT_EQ(framework.GetPrintingStatus(&layer, &progress, &minutes), NUV_OK);
      EXPECT_EQ(progress, row.progress);
    }
  }
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
  EXPECT_EQ(Errors(), (ErrorList{{29, 104}, {1, 140}, {1, 104}}));
}

// A printer's fault, its code, and that the command after it works again.
TEST_F(QueriesTest, EveryFaultEndsInItsCodeAndTheNextCommandWorks) {
  struct Row {
    const char* fault;
    int result;
    bool reopen;  // lost, or a reply or the rest of one is still on its way
  };
  const Row rows[] = {
      {"silent,code=102", NUV_OK, false},  // the resend is answered
      {"silent,code=102,count=3", NUV_FAILED, false},
      {"late,code=102,ms=100", NUV_OK, false},
      {"late,code=102,ms=900", NUV_OK, true},
      {"other-code,code=102", NUV_FAILED, false},
      {"refuse,code=102", NUV_PRINTER_REFUSED, false},
      {"twice,code=102", NUV_OK, false},
      {"oversized,code=102,kib=64", NUV_OK, true},
      {"drop,code=102", NUV_FAILED, true},
      {"reset,code=102", NUV_FAILED, true},
      {"drop-after,bytes=3", NUV_FAILED, true},
      {"reset-after,bytes=3", NUV_FAILED, true},
  };
  StartConnected(Printer("A1"));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    Errors().clear();
    Commits(row.fault);
    EXPECT_EQ(Status(), row.result);
    EXPECT_EQ(status, row.result == NUV_OK ? 0 : -1);
    EXPECT_EQ(Errors(), row.result == NUV_OK ? ErrorList{} : (ErrorList{{row.result, 102}}));
    simulator->ClearFaults(0);
    if (row.reopen) {
      EXPECT_TRUE(framework.GetConnect()->OpenDevice());
    }
    EXPECT_EQ(NameOfCurrent(), "printer-A1");
    EXPECT_EQ(Status(), NUV_OK);
  }
}

// Bytes that are no text, heads that are cut short, and the beginning of a reply taken for the
// whole.
TEST_F(QueriesTest, GarbageAndPiecesEndInAnErrorTheHostCanCatch) {
  struct Row {
    const char* fault;
    int result;
    int status;
  };
  constexpr int kMalformed = -1;
  const Row rows[] = {
      {"garbage,code=102,bytes=300,count=4", kMalformed, -1},
      {"answer,code=102,text=F,count=2", kMalformed, -1},
      // The head of the first reply stays, so that of the second stands where the verdict should.
      {"answer,code=102,text=F102", NUV_PRINTER_REFUSED, -1},
      // The verdict comes, the state not yet: a missing number is 0.
      {"pieces,code=102,bytes=4,ms=100", NUV_OK, 0},
  };
  StartConnected(Printer("A1"));
  simulator->SetError(0, 7);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    Commits(row.fault);
    int result = kMalformed;
    try {
      result = Status();
    } catch (const std::invalid_argument&) {
    }
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(status, row.status);
    simulator->ClearFaults(0);
    // The rest of the pieces may still be coming in behind the next request.
    ASSERT_TRUE(framework.GetConnect()->OpenDevice());
    EXPECT_EQ(NameOfCurrent(), "printer-A1");
  }
}

}  // namespace
}  // namespace Nuv::Connect
