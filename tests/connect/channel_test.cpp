// What the channel keeps of a connection: what is owed and confirmed, which printer it is, and what
// happens to the link that is left.

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

#include "connect/search_settings.h"
#include "tests/connect/job_lab.h"
#include "tests/connect/scripted_connector.h"
#include "tests/support/peer.h"
#include "tests/support/told.h"
#include "tests/support/virtual_clock.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ErrorList = std::vector<std::pair<int, int>>;

TEST(ReplyLedgerTest, ConfirmsWhatStandsBeforeARequestWithItsOwnReply) {
  // "F..." a request, "<..." a reply, "x" thrown away, else data; whether data is unconfirmed and
  // an answer owed then.
  const std::tuple<const char*, const char*, bool, bool> rows[] = {
      {"nothing written", "", false, false},
      {"data", "line", true, false},
      {"answered request", "line|F117\n|<F117 OK S:1\n", false, false},
      {"unanswered request", "line|F117\n", true, true},
      {"no data", "F117\n", false, true},
      {"sent again, answered once", "line|F117\n|F117\n|<F117 OK\n", false, true},
      {"another's code", "line|F117\n|<F102 OK\n", true, false},
      {"a longer code", "line|F117\n|<F1170 OK\n", true, false},
      {"another letter", "line|F117\n|<X117 OK\n", false, false},
      {"data behind the request", "F117\n|line|<F117 OK\n", true, false},
      {"late answer to an earlier one", "F117\n|line|F117\n|<F117 OK\n", true, true},
      {"both answers", "F117\n|line|F117\n|<F117 OK\n|<F117 OK\n", false, false},
      {"both in one piece", "F117\n|line|F117\n|<F117 OK\nF117 OK\n", false, false},
      {"one thrown away", "F117\n|line|F117\n|x|<F117 OK\n", false, false},
      {"an empty line is no answer", "line|F117\r\n|F117\r\n|<F117 OK\r\n\r\n", false, true},
      {"two pieces of one", "line|F117\n|<F117 O|<K S:1\n", false, false},
      {"the first of them only", "line|F117\n|<F117 O", false, true},
      {"a reply that nobody asked for", "line|<F117 OK\n", true, false},
      {"a raw line that is no command", "hello\n|<ello OK\n", true, false},
  };
  for (const auto& [name, text, unconfirmed, owes] : rows) {
    SCOPED_TRACE(name);
    ReplyLedger ledger;
    std::istringstream events(text);
    for (std::string event; std::getline(events, event, '|');) {
      if (event == "x") {
        ledger.Discarded();
      } else if (event.front() == '<') {
        ledger.Answered(event.substr(1));
      } else if (event.front() == 'F') {
        ledger.Asked(event);
      } else {
        ledger.Wrote(event.size());
      }
    }
    EXPECT_EQ(ledger.Unconfirmed(), unconfirmed);
    EXPECT_EQ(ledger.Owes(), owes);
    ledger.Reset();
    EXPECT_FALSE(ledger.Unconfirmed() || ledger.Owes());
    ledger.Asked("F117\n");
    EXPECT_FALSE(ledger.Answered());
    ledger.GiveUp();
    EXPECT_TRUE(ledger.Answered() && ledger.Owes()) << "it may still come";
  }
}

// docs/protocol.md promises hosts how long a printer is waited for.
TEST(ReplyLimitTest, IsThatOfTheProtocol) {
  std::ifstream file(NUV_SOURCE_FOLDER "/docs/protocol.md");
  std::stringstream page;
  page << file.rdbuf();
  EXPECT_THAT(page.str(),
              ::testing::HasSubstr("may take up to " +
                                   std::to_string(NuvConnect::kReplyTimeoutMs / 1000) + " s to"));
}

using ChannelTest = JobLab;

// How a fault of a printer ends, and that the command after it works again; what it says wrong is
// the matter of hostile_test.
TEST_F(ChannelTest, EveryFaultEndsInItsCodeAndTheNextCommandWorks) {
  // What was lost, or may go on sending the rest of a reply, is opened again.
  const std::tuple<const char*, int, bool> rows[] = {
      {"silent,code=102", NUV_OK, false},  // the resend is answered
      {"twice,code=102", NUV_OK, false},        {"oversized,code=102,kib=64", NUV_OK, true},
      {"drop-after,bytes=3", NUV_FAILED, true}, {"reset-after,bytes=3", NUV_FAILED, true},
  };
  StartConnected(Printer("A1"));
  for (const auto& [fault, result, reopen] : rows) {
    SCOPED_TRACE(fault);
    int status = 77;
    Errors().clear();
    Commits(fault);
    EXPECT_EQ(framework.GetPrinterStatus(&status), result);
    EXPECT_EQ(status, result == NUV_OK ? 0 : -1);
    EXPECT_EQ(Errors(), result == NUV_OK ? ErrorList{} : (ErrorList{{result, 102}}));
    simulator->ClearFaults(0);
    EXPECT_TRUE(!reopen || framework.GetConnect()->OpenDevice());
    EXPECT_EQ(NameOfCurrent(), "printer-A1");
  }
}

// An answer that came unasked, and is for the other setting.
TEST_F(ChannelTest, StaleInputIsNotTakenForTheAnswer) {
  StartConnected(Printer("A1"));
  int value = 0;
  const auto asked = simulator->Totals().requests;
  const std::string line = "F159 S0\r\n";
  ASSERT_TRUE(framework.GetConnect()->SendBytes({line.begin(), line.end()}));
  ASSERT_TRUE(Becomes([&] {
    const auto totals = simulator->Totals();
    return totals.requests == asked + 1 && totals.answersSent == totals.requests;
  }));
  EXPECT_EQ(framework.GetParameter(PrinterParameter::kZCompensation, &value), NUV_OK);
  EXPECT_THAT(Errors(), IsEmpty());
}

// A connection that ended with all confirmed is no loss: the job goes on over the next one.
TEST_F(ChannelTest, JobGoesOnWhenAllWasConfirmed) {
  auto printer = Printer("A1");
  printer.bufferBytes = 12;
  StartConnected(printer);
  WritePrintFile();
  // The first question of the wait is answered, the second is not.
  Commits("buffer-full,skip=2");
  Commits("drop,code=117,skip=3");
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(simulator->Totals().faultsApplied, 2U);
  ExpectJobArrived();
}

// A printer that erases its memory takes nothing for longer than a write waits, and then all.
TEST_F(ChannelTest, WhatIsQueuedOfAnImageGoesOutWithItsEnd) {
  Peer peer;
  StartTellingOf("127.0.0.1", peer.Port());
  IdlePeer nobody;
  VirtualClock inNoTime;
  NuvConnect raw(kReplyTimeoutMs, MakeUsbConnector(), inNoTime);
  raw.SetSearchTimeout(kHurriedSearchMs);
  while (serials.size() < 2) raw.EnumerateDevices(NUV_KIND_NETWORK, serials);
  ASSERT_TRUE(raw.ChooseDevice(NUV_KIND_NETWORK, 0));
  peer.Accept();
  const std::vector<uint8_t> image(size_t{32} << 20, 'x');
  raw.BeginJob(JobKind::kImage, nullptr);
  EXPECT_EQ(raw.Send({}), Reason::kNone);
  inNoTime.SetPeer(&nobody);
  EXPECT_EQ(raw.Send(image), Reason::kNotTaken);
  inNoTime.SetPeer(nullptr);
  size_t taken = 0;
  std::thread printer([&] { taken = peer.Reads(image.size()).size(); });
  raw.EndJob(true);
  raw.CloseDevice();
  printer.join();
  EXPECT_EQ(taken, image.size());
}

TEST_F(ChannelTest, IndexThatMeansAnotherPrinterNowIsRefused) {
  Start({Printer("A1"), Printer("A2", "Zafel Superfine", kSecondNetwork)});
  ListAll(framework);
  simulator->Unplug(0);
  ASSERT_TRUE(Finds(1));
  // Index 1 is nobody's.
  for (const auto& [serial, why] : {std::pair("A1", "is now "), {"A2", "is now gone"}}) {
    const auto connect = [&, wanted = serial] {
      EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_NETWORK, wanted), NUV_CONNECTION_REFUSED);
    };
    EXPECT_THAT(ToldBy(connect), ::testing::HasSubstr(why));
  }
  ASSERT_EQ(List(), NUV_OK);
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_NETWORK, "A2"), NUV_OK);
  EXPECT_EQ(NameOfCurrent(), "printer-A2");
}

TEST_F(ChannelTest, CloseOfTheInterfaceEndsNoQuery) {
  StartConnected(Printer("A1"));
  WritePrintFile();
  framework.Close();
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  EXPECT_EQ(Send(), NUV_OK);
  ExpectJobArrived();
}

// A USB printer, chosen, beside the network.
class LeftLinkTest : public JobLab {
 protected:
  void SetUp() override {
    JobLab::SetUp();
    if (IsSkipped()) return;
    port.printers = {{"U1"}};
    ASSERT_EQ(host.GetDeviceList(NUV_KIND_USB, serials, 0), NUV_OK);
    ASSERT_EQ(host.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
    serials.clear();
  }
  // The printer's answer, to be read next.
  void HasAnswered() { port.blocks = {"F9 OK\n"}; }

  Port port;
  ConnectingFramework host{clock, kReplyTimeoutMs, std::make_unique<ScriptedConnector>(port)};
  IConnect* const channel = host.GetConnect();
};

TEST_F(LeftLinkTest, IsClosedForOthersButStillTellsWhatWasRead) {
  Start({Printer("A1")});
  ListAll(host);
  ASSERT_EQ(host.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
  HasAnswered();
  EXPECT_EQ(channel->ReceiveReply(), "F9 OK");
  EXPECT_EQ(host.ChooseDevice(NUV_KIND_NETWORK, 7), NUV_CONNECTION_REFUSED);
  EXPECT_EQ(port.open, 0) << "a failed choice closes nothing of the other link";
  ASSERT_EQ(host.ChooseDevice(NUV_KIND_NETWORK, 0), NUV_OK);
  EXPECT_EQ(port.open, -1);
  std::vector<uint8_t> last;
  EXPECT_TRUE(channel->ReadLocalData(last));
  EXPECT_EQ(std::string(last.begin(), last.end()), "F9 OK\n");
  ASSERT_TRUE(Becomes([&] { return simulator->Status().connected; }));
  ASSERT_EQ(host.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
  EXPECT_TRUE(Becomes([&] { return !simulator->Status().connected; }));
  channel->CloseDevice();
  EXPECT_FALSE(channel->ReadLocalData(last)) << "closed by the host";
}

TEST_F(LeftLinkTest, UsbPrinterIsKeptUnlessItOwesAnAnswer) {
  port.closes = 0;
  HasAnswered();
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "F9 OK");
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(port.closes, 0) << "open, alive and nothing owed";
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "");
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(port.closes, 1) << "an answer may still come on the old one";
  // Answers that are owed behind an answered request are waited for, also when it is chosen again.
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "");
  HasAnswered();
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "F9 OK");
  EXPECT_THAT(port.quietWaits, IsEmpty()) << "behind an unanswered one nothing is";
  EXPECT_EQ(host.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
  EXPECT_EQ(channel->ExecuteCommand("F8\r\n"), "");
  EXPECT_THAT(port.quietWaits, ElementsAre(std::pair(250U, 2000U)));
}

TEST_F(LeftLinkTest, EveryOperationWaitsForTheExchangeUnderWay) {
  auto& raw = dynamic_cast<NuvConnect&>(*channel);
  std::vector<uint8_t> data;
  const std::function<void()> operations[] = {
      [&] { raw.Send({'x'}); },
      [&] { raw.Transact({"F8\r\n"}); },
      [&] { raw.ReadAgain(nullptr); },
      [&] { raw.ReadLocalData(data); },
      [&] { raw.Look(); },
      [&] { raw.EndJob(true); },
      [&] { raw.Identity(NUV_KIND_USB, 0); },
      [&] { raw.EnumerateDevices(NUV_KIND_USB, serials); },
      [&] { raw.EnumerateDevices(NUV_KIND_NETWORK, serials); },
      [&] { raw.SearchDevices(serials, "10.77.1.1", "255.255.255.0", 1); },
      [&] { raw.CollectBroadcastReplies(); },
      [&] { raw.ChooseDevice(NUV_KIND_NETWORK, 7); },
      [&] { raw.ChooseListed(NUV_KIND_NETWORK, 7, "gone"); },
      [&] { raw.ConnectAddress(""); },
      [&] { raw.SetLocalOption(0); },
      [&] { raw.SetSearchTimeout(1); },
      [&] { raw.SetSearchPort(kDefaultSearchPort); },
      [&] { raw.SetSearchMessage(kDefaultSearchMessage); },
      [&] { raw.Reopen(); },
      [&] { raw.CloseDevice(); },
  };
  raw.SetSearchTimeout(1);
  for (size_t i = 0; i < std::size(operations); ++i) {
    SCOPED_TRACE(i);
    std::thread meanwhile;
    std::atomic<bool> begun{false};
    std::atomic<bool> done{false};
    port.onRead = [&] {
      if (begun.exchange(true)) return;
      raw.BeginJob(JobKind::kImage, nullptr);
      meanwhile = std::thread([&] {
        operations[i]();
        done = true;
      });
      // Without the lock it would be through before that.
      for (int ms = 0; ms < 50 && !done; ++ms) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
      EXPECT_FALSE(done);
      HasAnswered();
    };
    EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "F9 OK");
    meanwhile.join();
    port.onRead = nullptr;
  }
}

}  // namespace
}  // namespace Nuv::Connect
