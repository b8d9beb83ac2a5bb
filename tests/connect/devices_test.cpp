// Finding, listing and choosing printers.

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "command/reply_views.h"
#include "connect/device_table.h"
#include "connect/search_settings.h"
#include "tests/connect/lab.h"
#include "tests/support/protocol_page.h"
#include "transport/search_turn.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;

class DevicesTest : public Lab {
 protected:
  Strings Search() {
    Strings found;
    framework.GetConnect()->SetSearchTimeout(kSearchMs);
    EXPECT_TRUE(framework.GetConnect()->EnumerateDevices(1, found));
    return found;
  }
};

TEST(DeviceTableTest, AsksEachModelWhatTheProtocolPageSays) {
  for (const ProtocolPage::Row& model : ProtocolPage::Models()) {
    const std::string name = NameOf(model);
    EXPECT_EQ(HasOwnSerialQuery(name), model["Listing"] == "140") << model.Where() << name;
    EXPECT_EQ(ListsNickname(name), model["Listing"] == "197") << model.Where() << name;
  }
}

TEST_F(DevicesTest, ListsThePrintersOfBothNetworks) {
  auto bego = Printer("B-1234567890", "BEGO VARSEO XS");
  auto mekrix = Printer("M1", "Mekrix3400 xP", kSecondNetwork);
  auto fabrix = Printer("F1", "FABRIX100 XP", kSecondNetwork);
  Start({bego, mekrix, fabrix});
  ASSERT_EQ(List(), NUV_OK);
  EXPECT_THAT(serials, UnorderedElementsAre("B-1234567890", "M1", "F1"));
  // A BEGO printer's serial number comes from its own query.
  for (const Strings& row : {Strings{kFirstNetwork, "B-1234567890", "BEGO VARSEO XS", ""},
                             {kSecondNetwork, "M1", "Mekrix3400 xP", ""},
                             {kSecondNetwork, "F1", "FABRIX100 XP", "Nick of F1"}}) {
    const auto at = std::find(serials.begin(), serials.end(), row[1]);
    const int index = static_cast<int>(at - serials.begin());
    EXPECT_THAT(row,
                ElementsAre(Info(index, NUV_DEVICE_IDENTIFIER), Info(index, NUV_DEVICE_SERIAL),
                            Info(index, NUV_DEVICE_MODEL), Info(index, NUV_DEVICE_SUPPLEMENTARY)));
  }
  std::string value = "kept";
  for (const auto& [kind, index] : {std::pair(1, 3), {1, -1}, {0, 0}, {2, 0}, {-1, 0}}) {
    EXPECT_EQ(framework.GetDeviceInfo(value, kind, index, 1), NUV_NOT_FOUND);
  }
  EXPECT_EQ(value, "kept");
  EXPECT_TRUE(Errors().empty());
  EXPECT_EQ(List(-1), NUV_FAILED) << "no kind of device";
}

TEST_F(DevicesTest, FailedListingLeavesTheTableAsItWas) {
  Start({Printer("A1"), Printer("A2")});
  ASSERT_EQ(List(), NUV_OK);
  ASSERT_EQ(serials, (Strings{"A1", "A2"}));
  // The second answer gives an address at which nobody listens.
  simulator->InjectFault(1, NuvSim::ParseFault("malformed,count=-1,text=F195 OK IP=<10.77.1.2> "
                                               "PORT=1 N=<ghost> M:0 CN:0"));
  EXPECT_EQ(List(), NUV_CONNECTION_REFUSED);
  EXPECT_EQ(serials, Strings{"A1"});
  EXPECT_EQ(Info(1, NUV_DEVICE_SERIAL), "A2");
  // Nobody answers.
  simulator->Unplug(0);
  simulator->Unplug(1);
  EXPECT_EQ(List(), NUV_NOT_FOUND);
  EXPECT_EQ(Info(1, NUV_DEVICE_SERIAL), "A2");
}

// The name would lead to the other simulator.
TEST_F(DevicesTest, NamesInAnswersAreNotLookedUp) {
  NuvSim::SimulatorConfig other;
  other.printers = {NuvSim::LoopbackPrinter()};
  NuvSim::Simulator named(std::move(other));
  named.Start();
  Start({Printer("A1")});
  Commits("malformed,count=-1,text=F195 OK IP=<localhost> PORT=" + std::to_string(named.TcpPort()) +
          " N=<named> M:0 CN:0");
  ASSERT_EQ(List(), NUV_OK);
  EXPECT_EQ(serials, (Strings{"", "A1"}));
  EXPECT_EQ(Info(0, NUV_DEVICE_IDENTIFIER), "localhost");
  EXPECT_EQ(Info(0, NUV_DEVICE_MODEL), "");
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 0), NUV_CONNECTION_REFUSED);
  EXPECT_EQ(framework.ConnectNetWorkDevice("localhost"), NUV_CONNECTION_REFUSED);
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 1), NUV_OK);
  // The local link's sockets.
  IConnect* const channel = framework.GetConnect();
  channel->SetLocalOption(1);
  ASSERT_TRUE(channel->SearchDevices(serials, "10.77.1.1", "255.255.255.0", kSearchMs));
  EXPECT_FALSE(channel->ChooseDevice(NUV_KIND_USB, 0));
  EXPECT_TRUE(channel->ChooseDevice(NUV_KIND_USB, 1));
}

TEST_F(DevicesTest, BegoSerialQueryDecidesTheListing) {
  Start({Printer("B-1", "BEGO VARSEO XS")});
  Commits("silent,code=140,count=3");
  EXPECT_EQ(List(), NUV_FAILED);
  EXPECT_THAT(Errors(), ElementsAre(std::pair(-1, 140)));
  Commits("other-code,code=140,text=F140 OK");  // "OK" twice and no serial number behind it
  EXPECT_EQ(List(), NUV_OK);
  Commits("answer,code=140,text=F140 OK");
  EXPECT_THROW(List(), Command::NoSerialNumber);
}

TEST_F(DevicesTest, SerialNumberConnectsOnTheSecondCall) {
  auto twin = Printer("A1");
  twin.name = "twin";
  Start({Printer("A1"), twin, Printer("A2")});
  // The time limit of an earlier listing stays in force where 0 is handed on.
  SearchSettings::Instance().SetTimeoutMs(kSearchMs);
  EXPECT_EQ(framework.GetDeviceList(NUV_KIND_NETWORK, serials, kSearchMs), NUV_OK);
  ConnectingFramework fresh(clock, kReplyTimeoutMs);
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "A2"), NUV_NOT_FOUND) << "it only lists";
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "A2"), NUV_OK);
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "a2"), NUV_NOT_FOUND);
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_NETWORK, "A1"), NUV_OK);
  EXPECT_EQ(NameOfCurrent(), "printer-A1") << "the first of two with one serial number";
}

TEST_F(DevicesTest, ReopensTheChosenPrinterAndNoOther) {
  Start({Printer("A1"), Printer("A2", "Zafel Superfine", kSecondNetwork)});
  EXPECT_EQ(framework.ConnectNetWorkDevice(kFirstNetwork), NUV_CONNECTION_REFUSED) << "not listed";
  ASSERT_EQ(List(), NUV_OK);
  EXPECT_EQ(framework.ConnectNetWorkDevice("10.77.1.25"), NUV_CONNECTION_REFUSED);
  EXPECT_EQ(framework.ConnectNetWorkDevice(""), NUV_CONNECTION_REFUSED);
  ASSERT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 0), NUV_OK);
  ASSERT_EQ(framework.ConnectNetWorkDevice(kSecondNetwork), NUV_OK);
  EXPECT_EQ(NameOfCurrent(), "printer-A2");

  IConnect* const channel = framework.GetConnect();
  EXPECT_TRUE(channel->CloseDevice());
  EXPECT_EQ(channel->ExecuteCommand("F102\r\n"), "") << "closed";
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(NameOfCurrent(), "printer-A2") << "the address, not the stored index";

  // A new search that finds only the other printer does not change the choice.
  simulator->Unplug(1);
  ASSERT_EQ(framework.GetConnect()->EnumerateDevices(1, serials), true);
  EXPECT_FALSE(channel->OpenDevice());
  simulator->Replug(1);
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(NameOfCurrent(), "printer-A2");
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 1), NUV_CONNECTION_REFUSED);
}

TEST_F(DevicesTest, RawChannelHandsTextsThrough) {
  IConnect* const channel = framework.GetConnect();
  EXPECT_FALSE(channel->OpenDevice()) << "nothing chosen yet";
  EXPECT_FALSE(channel->SendBytes({'x'}));
  StartConnected(Printer("A1"));
  EXPECT_EQ(channel->ExecuteCommand(""), "");
  EXPECT_EQ(channel->ExecuteCommand("F102\r\n"), "F102 OK S:0\r") << "only the line feed goes";
  EXPECT_FALSE(channel->SendBytes({}));
  EXPECT_TRUE(channel->SendBytes({'F', '1', '0', '2', '\r', '\n'}));
  EXPECT_EQ(channel->ReceiveReply(), "F102 OK S:0\r");
}

// What a search makes of the answers that a network can send.
TEST_F(DevicesTest, OnlyProperAnswersBecomeDevices) {
  struct Row {
    const char* fault;
    size_t devices;
  };
  const Row rows[] = {
      {"echo", 1},
      {"duplicate,n=5", 1},
      {"malformed,text=F195", 1},
      {"foreign", 1},
      {"bad-port", 0},
      {"bad-port,text=70000", 0},
      {"silent,code=195", 0},
      {"burst,n=1000", 1001},
  };
  Start({Printer("A1")});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.fault);
    Commits(row.fault);
    EXPECT_EQ(Search().size(), row.devices);
    simulator->ClearFaults(0);
  }
}

TEST_F(DevicesTest, BroadcastResultFiltersReplies) {
  Start({Printer("A1"), Printer("A2")});
  framework.GetConnect()->SetSearchTimeout(kSearchMs);
  Strings replies;
  EXPECT_EQ(framework.GetBroadCastResult(replies, ""), NUV_OK);
  EXPECT_EQ(replies.size(), 2U);
  EXPECT_EQ(framework.GetBroadCastResult(replies, "printer-A2"), NUV_OK);
  EXPECT_THAT(replies, ElementsAre(HasSubstr("IP=<10.77.1.2>"))) << "not those of before as well";
  EXPECT_EQ(framework.GetBroadCastResult(replies, "nothing"), NUV_NOT_FOUND);
}

// Searches of two channels at once would take each other's answers.
TEST_F(DevicesTest, SearchesTakeTurns) {
  Start({Printer("A1"), Printer("A2")});
  ConnectingFramework other(clock, kReplyTimeoutMs);
  framework.GetConnect()->SetSearchTimeout(kSearchMs);
  for (int round = 0; round < 2; ++round) {
    Strings listed;
    Strings replies;
    std::thread listing([&] { other.GetConnect()->EnumerateDevices(NUV_KIND_NETWORK, listed); });
    EXPECT_EQ(framework.GetBroadCastResult(replies, ""), NUV_OK);
    listing.join();
    EXPECT_EQ(listed.size(), 2U);
    EXPECT_EQ(replies.size(), 2U);
  }
}

// Another program's search is played by its lock file.
TEST_F(DevicesTest, WaitingForATurnHoldsUpNoQuery) {
  StartConnected(Printer("A1"));
  QLockFile others(Transport::SearchLockFile(kDefaultSearchPort));
  ASSERT_TRUE(others.tryLock(0));
  std::atomic<bool> done{false};
  std::thread searching([&] {
    EXPECT_EQ(Search().size(), 1U);
    done = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  EXPECT_FALSE(done) << "the query came only after the search";
  others.unlock();
  searching.join();
}

TEST_F(DevicesTest, ListingHandsItsTimeLimitOn) {
  Start({Printer("A1")});
  Commits("late,code=195,ms=30");
  SearchSettings::Instance().SetTimeoutMs(1);
  EXPECT_EQ(List(), NUV_OK) << "would not have waited for the answer";
  EXPECT_EQ(SearchSettings::Instance().TimeoutMs(), kSearchMs) << "stays for later searches";
}

TEST_F(DevicesTest, SearchSettingsOutliveTheFramework) {
  Start({Printer("A1")});
  {
    ConnectingFramework other(clock, kReplyTimeoutMs);
    other.SetUpdPort(6999);
  }
  EXPECT_EQ(List(), NUV_NOT_FOUND) << "nobody answers on that port";
  framework.SetBroadCastPort(kDefaultSearchPort);
  EXPECT_EQ(List(), NUV_OK);
  EXPECT_EQ(EffectiveTimeoutMs(0), 3000);
  EXPECT_EQ(EffectiveTimeoutMs(-1), 3000) << "a negative limit must not wait for ever";
  EXPECT_EQ(EffectiveTimeoutMs(1), 1);
}

}  // namespace
}  // namespace Nuv::Connect
