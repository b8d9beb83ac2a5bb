// Printers that say what no printer should: every call ends with a result of ours, soon, and the
// next one to a printer that is sound again is right.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "tests/printer/printer_lab.h"

namespace {

using nuv::Result;

class HostilePrinterTest : public PrinterLab {
 protected:
  void SetUp() override {
    PrinterLab::SetUp();
    Start({Config("SIM1", "127.0.0.1", "Fabrix150 xP")});
    printer = nuv::Printer::OpenAddress("127.0.0.1");
    call.timeLimit = std::chrono::milliseconds(40);
  }

  // Calls of all kinds against the printer as it is, and one against it as it should be.
  // `neverRight`: nothing that it says can be an answer.
  void AskEverything(bool neverRight) {
    const std::function<void()> questions[] = {
        [&] { printer.GetIdentity(call); },
        [&] { printer.GetState(call); },
        [&] { printer.GetJob(call); },
        [&] { printer.GetResin(call); },
        [&] { printer.GetLaserPowerPercent(call); },
        [&] { printer.SetZCompensationUm(5, call); },
        [&] { printer.GetScaling(call); },
        [&] { printer.SetScaling(nuv::Scaling(), call); },
        [&] { printer.SetNickname("x", call); },
        [&] { printer.GetAccessPoint(std::nullopt, call); },
        [&] { printer.GetAccessPoints(call); },
        [&] { printer.GetNetwork(nuv::Port::kWired, call); },
        [&] { printer.JoinAccessPoint("x", "y", call); },
        [&] { printer.GetVersions(call); },
        [&] { printer.GetSensors(call); },
        [&] { printer.GetLaser(1, call); },
        [&] { printer.GetScanUnit(call); },
        [&] { printer.GetLedHours(call); },
        [&] { printer.GetJobRecord(1, call); },
        [&] { printer.GetJobCounts(false, call); },
        [&] { printer.GetLastReadJob(call); },
        [&] { printer.SkipWarmup(call); },
        [&] { printer.AbandonJob(call); },
        // To which anything is a reply, and which tells in its outcome.
        [&] { printer.Raw("F102", call); },
        [&] { printer.SendText(NUV_SOURCE_FOLDER "/README.md", {}, call); },
    };
    const auto* const lastTwo = std::end(questions) - 2;
    for (const auto& ask : questions) {
      const Result reason = Reason(ask);
      if (neverRight && &ask < lastTwo) {
        EXPECT_NE(reason, Result::kOk) << "question " << &ask - questions;
      }
      EXPECT_NE(reason, Result::kSystem) << text;
      EXPECT_NE(reason, Result::kInvalidArgument) << text;
    }
    simulator->ClearFaults(0);
    EXPECT_EQ(Reason([&] { EXPECT_EQ(printer.GetIdentity().serial, "SIM1"); }), Result::kOk)
        << text;
  }

  nuv::Printer printer;
  nuv::Call call;
};

TEST_F(HostilePrinterTest, EveryCallEndsAndTheNextIsRight) {
  for (const std::string fault :
       {"silent", "drop", "reset", "other-code", "garbage", "oversized,kib=200", "endless",
        "endless,bytes=1,ms=20", "pieces,bytes=1,ms=20", "refuse", "twice", "answer,text=F",
        "answer,text=F102", "bad-number,field=S,text=-99999999999999999999",
        "bad-number,field=S,text=1111111111222222222233333333334444444444"}) {
    SCOPED_TRACE(fault);
    Commits(fault + ",count=-1");
    const bool mayBeRight = fault.find("pieces") == 0 || fault == "twice" || fault == "refuse" ||
                            fault.find("oversized") == 0 || fault.find("bad-number") == 0;
    AskEverything(!mayBeRight);
  }
  NuvSim::Fault fault = NuvSim::ParseFault("answer,text=x,count=-1");
  for (const std::string& said :
       {std::string("F102 OK S:\0", 11), std::string(64, '\0'), std::string(65536, 'F'),
        std::string("F102 OK\r\n\r\nF102 OK S:0")}) {
    fault.text = said;
    simulator->InjectFault(0, fault);
    AskEverything(false);
  }
}

// Replies that were hard once.
TEST_F(HostilePrinterTest, TheFuzzersRepliesEndAsResults) {
  NuvSim::Fault fault = NuvSim::ParseFault("answer,text=x,count=-1");
  for (const auto& entry :
       std::filesystem::directory_iterator(NUV_SOURCE_FOLDER "/fuzz/corpus/reply")) {
    SCOPED_TRACE(entry.path().filename());
    std::ifstream file(entry.path(), std::ios::binary);
    fault.text.assign(std::istreambuf_iterator<char>(file), {});
    simulator->InjectFault(0, fault);
    for (const auto& ask : std::initializer_list<std::function<void()>>{
             [&] { printer.GetIdentity(call); }, [&] { printer.GetResin(call); },
             [&] { printer.GetSensors(call); }, [&] { printer.GetAccessPoints(call); }}) {
      EXPECT_NE(Reason(ask), Result::kSystem) << text;
    }
    simulator->ClearFaults(0);
  }
  EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle);
}

}  // namespace
