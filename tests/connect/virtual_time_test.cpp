// What takes a printer on the network minutes, in no time: the waits of the whole library against a
// printer that lives in virtual time.

#include <gmock/gmock.h>

#include "tests/connect/lab.h"
#include "tests/support/told.h"
#include "tests/support/virtual_printer.h"

namespace Nuv::Connect {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class VirtualTimeTest : public Lab {
 protected:
  void SetUp() override {
    Lab::SetUp();
    if (IsSkipped()) return;
    StartTellingOf("127.0.0.1", printer.Port());
    channel.SetSearchTimeout(kHurriedSearchMs);
    while (host.ConnectNetWorkDevice("127.0.0.1") != NUV_OK) {
      ASSERT_TRUE(channel.EnumerateDevices(NUV_KIND_NETWORK, serials));
    }
    time.SetPeer(&printer);
    host.RegisterErrorCodeCallback(
        [](int result, int code) { Errors().emplace_back(result, code); });
  }
  // A connection is made in real time: the system makes it.
  void Reconnect() {
    time.SetPeer(nullptr);
    ASSERT_TRUE(channel.OpenDevice());
    time.SetPeer(&printer);
  }

  VirtualPrinter printer;
  VirtualClock time;
  ConnectingFramework host{time};
  IChannel& channel = dynamic_cast<IChannel&>(*host.GetConnect());
  int status = 77;
};

// Three attempts of 36 s and two pauses of a second.
TEST_F(VirtualTimeTest, ASilentPrinterIsWaitedForAlmostTwoMinutes) {
  const std::string told = ToldBy([&] { EXPECT_EQ(host.GetPrinterStatus(&status), NUV_FAILED); });
  EXPECT_THAT(told, HasSubstr("F102 failed: the printer did not answer in time"));
  EXPECT_EQ(time.NowMs(), 3 * 36000 + 2 * 1000);
  EXPECT_THAT(printer.requests, ElementsAre("F102\r\n", "F102\r\n", "F102\r\n"));
  EXPECT_THAT(Errors(), ElementsAre(std::pair(1, 102)));
}

TEST_F(VirtualTimeTest, AnAnswerCountsUntilTheLastMomentAndBehindTheResend) {
  for (const auto& [afterMs, tookMs, requests] :
       {std::tuple(35999, 35999, 1U), {36500, 37000, 2U}, {40000, 40000, 2U}}) {
    SCOPED_TRACE(afterMs);
    printer.requests.clear();
    printer.answers = [after = milliseconds(afterMs)](const std::string& request) {
      return VirtualPrinter::Answer{request.substr(0, 4) + " OK S:1\r\n", after};
    };
    const int64_t before = time.NowMs();
    EXPECT_EQ(host.GetPrinterStatus(&status), NUV_OK);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(time.NowMs() - before, tookMs);
    EXPECT_EQ(printer.requests.size(), requests);
    // The resend's answer is on its way too.
    Reconnect();
  }
}

// The printer answers the first request late, so that it is sent again and answered twice.
TEST_F(VirtualTimeTest, SecondAnswerIsNotTakenForTheNextQuestion) {
  printer.answers = [&](const std::string& request) {
    if (request == "F159 S1\r\n") return VirtualPrinter::Answer{"F159 OK S1 V5\r\n"};
    const int afterMs = printer.requests.size() == 1 ? 36900 : 150;
    return VirtualPrinter::Answer{"F159 OK S0 V80\r\n", milliseconds(afterMs)};
  };
  int power = 0;
  int micrometres = 0;
  EXPECT_EQ(host.GetParameter(PrinterParameter::kLaserPower, &power), NUV_OK);
  EXPECT_EQ(host.GetParameter(PrinterParameter::kZCompensation, &micrometres), NUV_OK);
  EXPECT_EQ(power, 80);
  EXPECT_EQ(micrometres, 5);
  EXPECT_EQ(time.NowMs(), 37150 + 250) << "until nothing more came";
  EXPECT_EQ(host.GetParameter(PrinterParameter::kZCompensation, &micrometres), NUV_OK);
  EXPECT_EQ(time.NowMs(), 37150 + 250) << "and nothing is owed any more";
}

TEST_F(VirtualTimeTest, WhatIsNotTakenIsToldSo) {
  printer.stuck = true;
  const std::string endless(size_t{32} << 20, 'x');
  EXPECT_EQ(channel.Transact({endless}).reason, Reason::kNotTaken);
  // 30 s without a byte taken: the system's buffers take theirs at once.
  EXPECT_EQ(time.NowMs(), 30000);
  EXPECT_FALSE(channel.Look().alive);
  EXPECT_EQ(channel.Transact({"F102\r\n"}).reason, Reason::kNotOpen);

  // Of a command, whose resends find the link closed, the reason is the first.
  Reconnect();
  std::map<std::string, std::string> reply;
  const std::string told =
      ToldBy([&] { EXPECT_EQ(host.ExecuteCommand(104, {endless}, reply), NUV_FAILED); });
  EXPECT_THAT(told, HasSubstr("F104 failed: the printer did not take the bytes in time"));
}

}  // namespace
}  // namespace Nuv::Connect
