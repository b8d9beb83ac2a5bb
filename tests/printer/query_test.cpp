// A printer through the C++ layer: what it tells, what can be set, and how calls on it end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <future>
#include <stdexcept>
#include <thread>
#include <tuple>

#include "tests/printer/printer_lab.h"

namespace {

using nuv::Printer;
using nuv::Result;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr char kHere[] = "127.0.0.1";

class QueryTest : public PrinterLab {
 protected:
  void Open(const std::string& model = "Zafel Superfine") {
    printer = {};
    Start({Config("SIM0000000001", kHere, model)});
    printer = Printer::OpenAddress(kHere);
  }
  // A call whose end is not waited for.
  std::future<Result> Later(const nuv::Call& call = {}) {
    return std::async(std::launch::async, [this, call] {
      try {
        printer.GetState(call);
      } catch (const nuv::Error& error) {
        return error.Reason();
      }
      return Result::kOk;
    });
  }
  static nuv::SearchOptions Addresses(const std::string& addresses) {
    nuv::SearchOptions options;
    options.links = {nuv::Link::kNetwork};
    options.addresses = addresses;
    return options;
  }
  bool IsAsked(size_t requests) {
    return Becomes([&] { return simulator->Totals().requests >= requests; });
  }

  Printer printer;
};

TEST_F(QueryTest, ReadsAndSetsWhatAResinPrinterHas) {
  Open();
  const nuv::Identity identity = printer.GetIdentity();
  EXPECT_EQ(identity.serial, "SIM0000000001");
  EXPECT_EQ(identity.address, kHere);
  const nuv::State state = printer.GetState();
  EXPECT_EQ(state.state, nuv::PrinterState::kIdle);
  EXPECT_FALSE(state.layer || state.endsAt || state.jobName);
  simulator->SetError(0, 17);
  EXPECT_EQ(printer.GetState().errorNumber, 17);
  simulator->ClearError(0);
  EXPECT_EQ(printer.GetJob().index, 0);
  const auto now = std::chrono::system_clock::now();
  Commits("answer,code=102,text=F102 OK S:1 L:151 T:23 C:50% R:Job1");
  const nuv::State printing = printer.GetState();
  EXPECT_EQ(printing.state, nuv::PrinterState::kPrinting);
  EXPECT_EQ(printing.layer, 151);
  EXPECT_EQ(printing.percent, 50);
  EXPECT_EQ(printing.left, std::chrono::minutes(23));
  EXPECT_EQ(printing.jobName, "Job1");
  EXPECT_GE(*printing.endsAt, now + std::chrono::minutes(22));
  EXPECT_LE(*printing.endsAt, now + std::chrono::minutes(30));

  const nuv::Resin resin = printer.GetResin();
  EXPECT_EQ(resin.state, nuv::ResinState::kReady);
  EXPECT_TRUE(resin.remainingMl && resin.tankVolumeMl);
  EXPECT_EQ(resin.code, "1001");
  EXPECT_EQ(resin.lot, "L0001");
  EXPECT_TRUE(resin.openMode.has_value());
  EXPECT_EQ(resin.tagRegistered, true);
  simulator->SetTagRegistered(0, false);
  simulator->SetResinRefusal(0, 3);
  EXPECT_EQ(printer.GetResin().state, nuv::ResinState::kWrong);
  EXPECT_EQ(printer.GetResin().tagRegistered, false);

  printer.SetLaserPowerPercent(85);
  printer.SetZCompensationUm(-20);
  EXPECT_EQ(printer.GetLaserPowerPercent(), 85);
  EXPECT_EQ(printer.GetZCompensationUm(), -20);
  EXPECT_EQ(Reason([&] { printer.SetLaserPowerPercent(101); }), Result::kRefused);
  nuv::Scaling scaling;
  scaling.x[1] = 0.25;
  scaling.z[0] = 1.5;
  printer.SetScaling(scaling);
  EXPECT_EQ(printer.GetScaling().x[1], 0.25);
  EXPECT_EQ(printer.GetScaling().z[0], 1.5);
  printer.SetNickname("by the window: left");
  EXPECT_EQ(printer.GetIdentity().nickname, "by the window: left");
  EXPECT_EQ(Reason([&] { printer.SetNickname("a\r\nF104 S2"); }), Result::kInvalidArgument);
  printer.SkipWarmup();
  EXPECT_EQ(printer.Raw("F102"), "F102 OK S:0");
  EXPECT_EQ(printer.Raw("F999 x"), "F999 NG") << "a refusal is a reply, too";
  EXPECT_EQ(Reason([&] { printer.AbandonJob(); }), Result::kOk);
}

TEST_F(QueryTest, ReadsAndSetsTheNetwork) {
  auto config = Config("W1", kHere);
  Start({config});
  printer = Printer::OpenAddress(kHere);
  const auto points = printer.GetAccessPoints();
  ASSERT_FALSE(points.empty());
  const std::string name = points.front().name.value();
  EXPECT_EQ(printer.GetAccessPoint(name).joined, false);
  EXPECT_FALSE(printer.GetNetwork(nuv::Port::kWireless).address) << "0.0.0.0 is none";
  EXPECT_TRUE(printer.GetNetwork(nuv::Port::kWired).mac);
  EXPECT_THAT(simulator->Requests(), ::testing::Contains("F190 S" + name));
  EXPECT_EQ(Reason([&] { printer.JoinAccessPoint("no such", "wrong"); }), Result::kRefused);
  EXPECT_THAT(text, ::testing::Not(HasSubstr("wrong")));
  const std::string secured = simulator->Requests().back();
  EXPECT_THAT(secured, HasSubstr("wrong"));
  EXPECT_EQ(Reason([&] { printer.JoinAccessPoint("no such", std::nullopt); }), Result::kRefused);
  EXPECT_NE(simulator->Requests().back(), secured);
  EXPECT_THAT(simulator->Requests().back(), HasSubstr("no such"));
  printer.LeaveAccessPoint();
  EXPECT_EQ(printer.GetAccessPoint().joined, false);
  EXPECT_EQ(Reason([&] { printer.GetNetwork(static_cast<nuv::Port>(3)); }),
            Result::kInvalidArgument);
  // However the network cuts the answer.
  Commits("pieces,code=198,bytes=1,ms=1");
  EXPECT_EQ(printer.GetAccessPoints().size(), points.size());
  Commits("drop,code=191");
  EXPECT_EQ(Reason([&] { printer.LeaveAccessPoint(); }), Result::kUnconfirmed);
}

TEST_F(QueryTest, ReadsWhatOtherModelsHave) {
  Open("Fabrix120 xP");
  EXPECT_TRUE(printer.GetSensors().lidClosed && printer.GetVersions().lcmPanel);
  EXPECT_EQ(printer.GetLaser(2).pulseWidth[4], 502);
  EXPECT_EQ(Reason([&] { printer.GetLaser(5); }), Result::kRefused);
  EXPECT_EQ(printer.GetScanUnit().yOffset, 7);
  Open("Mekrix3400 xP");
  EXPECT_GT(printer.GetLedHours(), 0);
  Open("BEGO VARSEO XS");
  EXPECT_TRUE(printer.GetResin().useBy && printer.GetResin().name);
  Open("Zafel 1.0");
  EXPECT_TRUE(printer.GetResin().type && printer.GetResin().useBy);
  Open("Zafel Superfine EngVer");
  EXPECT_EQ(printer.GetJobCounts().started, 0);
  EXPECT_EQ(printer.GetLastReadJob(), 0);
  EXPECT_EQ(Reason([&] { printer.SetLastReadJob(9); }), Result::kRefused);
  EXPECT_EQ(Reason([&] { printer.GetJobRecord(1); }), Result::kRefused);
  Commits("answer,code=174,text=F174 OK NJob1 C1001 T20261121T103000");
  Commits("answer,code=175,text=F175 OK L300 T45 V12 R1");
  Commits("answer,code=176,text=F176 OK T50 E1500 B9000 P80");
  Commits("answer,code=177,text=F177 OK T- QL0001");
  const nuv::JobRecord record = printer.GetJobRecord(1);
  EXPECT_EQ(record.result, nuv::JobResult::kCancelled);
  EXPECT_FALSE(record.ended) << "not yet";
}

TEST_F(QueryTest, AnswersThatCannotBeReadAreFailures) {
  Open();
  const std::pair<const char*, Result> rows[] = {
      {"bad-number,code=102,field=S", Result::kUnreadable},
      {"answer,code=102,text=F102 OK", Result::kUnreadable},
      {"answer,code=102,text=Fx OK", Result::kUnreadable},
      {"refuse,code=102", Result::kRefused},
      {"drop,code=102,count=3", Result::kLost},
  };
  for (const auto& [fault, reason] : rows) {
    Commits(fault);
    command = 0;
    EXPECT_EQ(Reason([&] { printer.GetState(); }), reason) << fault;
    EXPECT_EQ(command, 102);
    simulator->ClearFaults(0);
    EXPECT_EQ(Reason([&] { printer.GetState(); }), Result::kOk) << "behind " << fault;
  }
}

TEST_F(QueryTest, CallsEndWhenNobodyWaitsAnyMore) {
  Open();
  Commits("silent,code=102,count=-1");
  nuv::Call call;
  call.timeLimit = std::chrono::milliseconds(50);
  EXPECT_EQ(Reason([&] { printer.GetState(call); }), Result::kTimeLimit);
  EXPECT_THAT(text, HasSubstr("command 102: "));
  Commits("silent,code=197,count=-1");
  EXPECT_EQ(Reason([&] { printer.GetIdentity(call); }), Result::kTimeLimit);
  EXPECT_EQ(Reason([&] { printer.Raw("F102", call); }), Result::kTimeLimit);
  // Nobody is there.
  nuv::Identity nobody;
  nobody.address = "10.77.2.200";
  nobody.tcpPort = 9000;
  EXPECT_EQ(Reason([&] { Printer::Open(nobody, call); }), Result::kTimeLimit);
  EXPECT_THAT(text, HasSubstr("not yet connected"));
  call.stillWanted = [] { return false; };
  EXPECT_EQ(Reason([&] { Printer::Open(nobody, call); }), Result::kCancelled);
  call.timeLimit = {};
  int asked = 0;
  call.stillWanted = [&] { return ++asked < 3; };
  EXPECT_EQ(Reason([&] { printer.GetState(call); }), Result::kCancelled);
  call.stillWanted = []() -> bool { throw std::runtime_error("mine"); };
  EXPECT_THROW(printer.GetState(call), std::runtime_error);

  const size_t before = simulator->Totals().requests;
  auto first = Later();
  ASSERT_TRUE(IsAsked(before + 1));
  auto second = Later();  // waits for its turn, or comes too late for the cancel
  call.stillWanted = nullptr;
  call.timeLimit = std::chrono::milliseconds(50);
  EXPECT_EQ(Later(call).get(), Result::kTimeLimit) << "its turn did not come";
  printer.Cancel();
  EXPECT_EQ(first.get(), Result::kCancelled);
  if (second.wait_for(std::chrono::milliseconds(300)) != std::future_status::ready)
    printer.Cancel();
  EXPECT_EQ(second.get(), Result::kCancelled);
  simulator->ClearFaults(0);
  EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle) << "the next one works";
}

// Whoever cancels, however often, at whatever moment.
TEST_F(QueryTest, ACancelMayComeAtAnyMoment) {
  Open();
  std::atomic<bool> ended{false};
  std::thread canceller([&] {
    while (!ended) printer.Cancel();
  });
  int answers = 0;
  for (int i = 0; i < 300; ++i) {
    const Result result = Reason([&] { printer.GetState(); });
    answers += result == Result::kOk ? 1 : 0;
    EXPECT_TRUE(result == Result::kOk || result == Result::kCancelled) << text;
  }
  ended = true;
  canceller.join();
  EXPECT_LT(answers, 300);
  EXPECT_EQ(Reason([&] { printer.GetState(); }), Result::kOk) << text;
}

TEST_F(QueryTest, APrinterIsOpenOnceAndGoesWithItsHandle) {
  Open();
  EXPECT_EQ(Reason([] { Printer::OpenAddress(kHere); }), Result::kBusy);
  Printer moved = std::move(printer);
  EXPECT_EQ(Reason([&] { printer.GetState(); }), Result::kBadHandle);
  // In a callback of a call on it.
  Commits("silent,code=102,count=-1");
  nuv::Call call;
  Result inside = Result::kOk;
  call.stillWanted = [&] {
    inside = Reason([&] { moved.GetIdentity(); });
    nuv_printer_free(moved.Handle());
    return true;
  };
  EXPECT_EQ(Reason([&] { moved.GetState(call); }), Result::kCancelled);
  EXPECT_EQ(inside, Result::kBusy);
  EXPECT_EQ(Reason([&] { moved.GetState(); }), Result::kBadHandle);
  EXPECT_TRUE(Becomes([&] { return !simulator->Status().connected; }));
  simulator->ClearFaults(0);

  // Another thread's call ends with the handle.
  nuv::SearchOptions options = Addresses(kHere);
  options.addressesOnly = true;  // which would not tell the serial number
  printer = Printer::OpenSerial("SIM0000000001", options);
  Commits("silent,code=102,count=-1");
  const size_t before = simulator->Totals().requests;
  auto other = Later();
  ASSERT_TRUE(IsAsked(before + 1));
  nuv_printer_free(printer.Handle());
  EXPECT_EQ(other.get(), Result::kCancelled);
  EXPECT_EQ(Reason([&] { Printer::OpenSerial("OTHER", Addresses(kHere)); }), Result::kNotFound);
  EXPECT_EQ(Reason([] { Printer::OpenAddress("127.0.0.1:6014"); }), Result::kNotFound);
  EXPECT_EQ(Reason([] { Printer::OpenAddress("printer.local"); }), Result::kInvalidArgument);
  EXPECT_EQ(Reason([] { Printer::Open(nuv::Identity()); }), Result::kInvalidArgument);
  nuv_identity byHand = NUV_INIT(nuv_identity);
  nuv_printer* none = nullptr;
  for (const auto& [link, flags, address, port] :
       {std::tuple(0 + NUV_LINK_NETWORK, 0, kHere, 9000), std::tuple(0 + NUV_LINK_USB, 1, "", 0),
        std::tuple(0 + NUV_LINK_NETWORK, 1, kHere, 0),
        std::tuple(0 + NUV_LINK_NETWORK, 1, kHere, 65536),
        std::tuple(0 + NUV_LINK_NETWORK, 1, "printer.local", 9000),
        std::tuple(static_cast<int>(NUV_LINK_NETWORK) + NUV_LINK_USB, 1, kHere, 9000)}) {
    byHand.link = link;
    byHand.tcp_port = port;
    byHand.address.flags = static_cast<uint32_t>(flags);
    std::strcpy(byHand.address.text, address);
    EXPECT_EQ(nuv_printer_open(&none, &byHand, nullptr, nullptr), NUV_RESULT_INVALID_ARGUMENT);
  }
  nuv::Identity nowhere;
  nowhere.address = kHere;
  nowhere.tcpPort = 1;
  EXPECT_EQ(Reason([&] { Printer::Open(nowhere); }), Result::kUnreachable);
}

TEST_F(QueryTest, AnIdleConnectionIsLetGoAndMadeAnew) {
  Open();
  const auto isFree = [&] { return !simulator->Status().connected; };
  const auto connections = [&] { return simulator->Totals().connections; };
  for (int i = 0; i < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::seconds(3));
    printer.GetState();
  }
  EXPECT_EQ(connections(), 1U) << "the last call counts";
  EXPECT_TRUE(Becomes(isFree)) << "behind some seconds";
  printer.GetState();
  printer.LetGo();
  printer.GetState();
  EXPECT_EQ(connections(), 3U);
  // Of a call that is under way, behind it; the next one takes its turn.
  Commits("late,code=102,ms=500");
  const size_t before = simulator->Totals().requests;
  auto first = Later();
  ASSERT_TRUE(IsAsked(before + 1));
  auto second = Later();
  printer.LetGo();
  EXPECT_EQ(first.get(), Result::kOk);
  EXPECT_EQ(second.get(), Result::kOk);
  EXPECT_EQ(connections(), 4U);
  printer.GetState();
  EXPECT_EQ(connections(), 4U) << "once";
  simulator->Unplug(0);
  EXPECT_EQ(Reason([&] { printer.GetState(); }), Result::kUnreachable);
  simulator->Replug(0);
  EXPECT_EQ(printer.GetState().state, nuv::PrinterState::kIdle);
}

TEST_F(QueryTest, RawCopiesWhatFits) {
  Open();
  char reply[8];
  size_t length = 77;
  EXPECT_EQ(
      nuv_printer_raw(reply, sizeof reply, &length, printer.Handle(), "F102", nullptr, nullptr),
      NUV_RESULT_TOO_SMALL);
  EXPECT_STREQ(reply, "F102 OK");
  EXPECT_EQ(length, 11U);
  EXPECT_EQ(nuv_printer_raw(nullptr, 0, &length, printer.Handle(), "F102", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(length, 0U);
  Commits("twice,code=102");
  EXPECT_EQ(printer.Raw("F102"), "F102 OK S:0");
  EXPECT_EQ(printer.Raw(std::nullopt), "F102 OK S:0") << "one more";
  EXPECT_EQ(printer.Raw("F160 S1 C2"), "F160 OK START");
  EXPECT_EQ(printer.Raw(std::nullopt), "F160 OK FINISH");
}

}  // namespace
