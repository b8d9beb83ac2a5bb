// Finding, listing and choosing printers.

#include <gmock/gmock.h>

#include <QUdpSocket>
#include <atomic>
#include <thread>

#include "connect/device_table.h"
#include "connect/search_settings.h"
#include "tests/connect/lab.h"
#include "tests/support/environment.h"
#include "tests/support/peer.h"
#include "tests/support/protocol_page.h"
#include "tests/support/told.h"
#include "transport/search_turn.h"

namespace Nuv::Connect {
namespace {

using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

using DevicesTest = Lab;

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
  ListAll(framework);
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

constexpr int kForEver = 3'600'000;

// No search reaches the end of its time limit: it is over when all have answered.
TEST_F(DevicesTest, AsksTheAddressesOfTheEnvironment) {
  Start({Printer("A1"), Printer("A2", "Zafel Superfine", kSecondNetwork),
         Printer("L1", "Zafel Superfine", "127.0.0.1")});
  const auto list = [&](const char* addresses, int limitMs = kForEver) {
    SetEnvironment("NUVCONNECT_SEARCH", addresses);
    serials.clear();
    framework.GetDeviceList(NUV_KIND_NETWORK, serials, limitMs);
    return serials;
  };
  EXPECT_THAT(list("10.77.2.2"), ElementsAre("A2"));
  EXPECT_THAT(ToldBy([&] {
                EXPECT_THAT(list("127.0.0.1 nowhere 10.77.1.255 10.77.1.2:6013"),
                            UnorderedElementsAre("L1", "A1"));
              }),
              HasSubstr("NUVCONNECT_SEARCH: passed over: nowhere and 1 more\n"));
  EXPECT_THAT(list("10.77.1.2:6014", kSearchMs), ElementsAre()) << "nobody asks that port";
  EXPECT_THAT(ToldBy([&] { list("10.99.1.1", kSearchMs); }),
              HasSubstr("search of 10.99.1.1: not sent: "));

  // Not the first datagram, nor what no printer sends; what it tells of itself, a router may have
  // made wrong.
  Commits("silent,code=195,count=1");
  Commits("malformed,count=-1,text=F195 NG");
  EXPECT_THAT(list("10.77.1.2", kReplyTimeoutMs), ElementsAre("A1")) << "asked again";
  simulator->ClearFaults(0);
  const std::string port = std::to_string(simulator->TcpPort(0));
  Commits("malformed,count=-1,text=F195 OK IP=<192.0.2.7> PORT=" + port + " N=<far> M:0 CN:0");
  EXPECT_THAT(ToldBy([&] { EXPECT_THAT(list("10.77.1.2"), ElementsAre("A1")); }),
              AllOf(HasSubstr("10.77.1.2: its printer tells 192.0.2.7, which is not used\n"),
                    HasSubstr("search reply: F195 OK IP=<10.77.1.2>")));
  EXPECT_EQ(Info(0, NUV_DEVICE_IDENTIFIER), kFirstNetwork);
  Strings replies;
  framework.GetBroadCastResult(replies, "");
  EXPECT_THAT(replies, ElementsAre(HasSubstr("IP=<10.77.1.2> PORT=" + port + " N=<far>")));
  simulator->ClearFaults(0);

  for (const auto& [addresses, count] : {std::pair("broadcast 127.0.0.1", 3U), {" ", 2U}}) {
    for (int i = 0; i < 100 && list(addresses, kHurriedSearchMs).size() != count; ++i) {
    }
    EXPECT_EQ(serials.size(), count) << addresses;
  }
  SetEnvironment("NUVCONNECT_SEARCH", "");
}

TEST_F(DevicesTest, OnlyWhoWasAskedAnswers) {
  Start({Printer("L1", "Zafel Superfine", "127.0.0.1")});
  QUdpSocket asked;
  QUdpSocket stray;
  const QHostAddress here(QHostAddress::LocalHost);
  ASSERT_TRUE(asked.bind(here) && stray.bind(here));
  SetEnvironment("NUVCONNECT_SEARCH", ("127.0.0.1:" + std::to_string(asked.localPort())).c_str());
  std::thread answers([&, port = std::to_string(simulator->TcpPort(0))] {
    ASSERT_TRUE(asked.waitForReadyRead(kForEver));
    char request[64];
    QHostAddress host;
    quint16 from = 0;
    asked.readDatagram(request, sizeof request, &host, &from);
    stray.writeDatagram("F195 OK IP=<127.0.0.1> PORT=1 N=<x> M:0 CN:0", host, from);
    const std::string answer = "F195 OK IP=<127.0.0.1> PORT=" + port + " N=<x> M:0 CN:0";
    asked.writeDatagram(answer.c_str(), host, from);
  });
  EXPECT_EQ(framework.GetDeviceList(NUV_KIND_NETWORK, serials, kForEver), NUV_OK);
  EXPECT_THAT(serials, ElementsAre("L1"));
  answers.join();
  SetEnvironment("NUVCONNECT_SEARCH", "");
}

// The name would lead to the far end.
TEST_F(DevicesTest, NamesInAnswersAreNotLookedUp) {
  Peer far;
  StartTellingOf("localhost", far.Port());
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
  EXPECT_EQ(ToldBy([&] { EXPECT_FALSE(channel->ChooseDevice(NUV_KIND_USB, 0)); }),
            "[NKG]connect: \"localhost\" is no address\n");
  EXPECT_TRUE(channel->ChooseDevice(NUV_KIND_USB, 1));
}

// A wait for a handle is over soon, whatever its limit is.
class HastyClock final : public Platform::Clock {
  Platform::WaitEnd WaitReady(Platform::Handle handle, Platform::Readiness readiness,
                              Platform::Deadline deadline,
                              const Platform::Interrupts& interrupts) override {
    const auto soon = Now() + std::chrono::milliseconds(kSearchMs);
    return Clock::WaitReady(handle, readiness, std::min(deadline, soon), interrupts);
  }
};

TEST_F(DevicesTest, SerialNumberConnectsOnTheSecondCall) {
  auto twin = Printer("A1");
  twin.name = "twin";
  Start({Printer("A1"), twin, Printer("A2")});
  HastyClock hasty;
  ConnectingFramework fresh(hasty, kReplyTimeoutMs);
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "A2"), NUV_NOT_FOUND) << "it only lists";
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "A2"), NUV_OK);
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, "a2"), NUV_NOT_FOUND);
  EXPECT_EQ(fresh.ConnectDeviceBySN(NUV_KIND_NETWORK, ""), NUV_NOT_FOUND);
  EXPECT_EQ(fresh.ConnectDeviceBySN(7, "A2"), NUV_NOT_FOUND);
  fresh.GetConnect()->CloseDevice();
  ListAll(framework);
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_NETWORK, "A1"), NUV_OK);
  EXPECT_EQ(NameOfCurrent(), "printer-A1") << "the first of two with one serial number";
}

TEST_F(DevicesTest, ReopensTheChosenPrinterAndNoOther) {
  Start({Printer("A1"), Printer("A2", "Zafel Superfine", kSecondNetwork)});
  EXPECT_EQ(framework.ConnectNetWorkDevice(kFirstNetwork), NUV_CONNECTION_REFUSED) << "not listed";
  ListAll(framework);
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
  ASSERT_TRUE(Finds(1));
  EXPECT_FALSE(channel->OpenDevice());
  simulator->Replug(1);
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(NameOfCurrent(), "printer-A2");
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 1), NUV_CONNECTION_REFUSED);
}

// What a search makes of the answers that a network can send.
TEST_F(DevicesTest, OnlyProperAnswersBecomeDevices) {
  Start({Printer("A1")});
  framework.GetConnect()->SetSearchTimeout(kSearchMs);
  for (const auto& [fault, devices] :
       {std::pair("echo", 1U), {"duplicate,n=5", 1U}, {"bad-port", 0U}, {"burst,n=1000", 1001U}}) {
    SCOPED_TRACE(fault);
    Commits(fault);
    Strings found;
    EXPECT_TRUE(framework.GetConnect()->EnumerateDevices(NUV_KIND_NETWORK, found));
    EXPECT_EQ(found.size(), devices);
    simulator->ClearFaults(0);
  }
}

TEST_F(DevicesTest, BroadcastResultFiltersReplies) {
  Start({Printer("A1"), Printer("A2")});
  framework.GetConnect()->SetSearchTimeout(kSearchMs);
  Strings replies{"before"};
  EXPECT_EQ(framework.GetBroadCastResult(replies, "printer-A2"), NUV_OK);
  EXPECT_THAT(replies, ElementsAre(HasSubstr("IP=<10.77.1.2>"))) << "not those of before as well";
  EXPECT_EQ(framework.GetBroadCastResult(replies, "nothing"), NUV_NOT_FOUND);
}

// Searches at once would take each other's answers. Another program's is played by its lock file.
TEST_F(DevicesTest, SearchesTakeTurnsAndHoldUpNoQuery) {
  StartConnected(Printer("A1"));
  QLockFile others(Transport::SearchLockFile(kDefaultSearchPort));
  ASSERT_TRUE(others.tryLock(0));
  std::atomic<int> done{0};
  std::thread searching([&] {
    EXPECT_TRUE(Finds(1));
    ++done;
  });
  Strings replies;
  std::thread collecting([&] {
    while (framework.GetBroadCastResult(replies, "") != NUV_OK) {
    }
    ++done;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(NameOfCurrent(), "printer-A1");
  EXPECT_EQ(done, 0) << "the query came only after a search";
  others.unlock();
  framework.GetConnect()->SetSearchMessage(kDefaultSearchMessage);  // as the searches read it
  searching.join();
  collecting.join();
  EXPECT_EQ(replies.size(), 1U);
}

TEST_F(DevicesTest, APortThatAnotherProgramHasIsTold) {
  QUdpSocket other;
  ASSERT_TRUE(other.bind(QHostAddress(QHostAddress::AnyIPv4), 6999, QUdpSocket::DontShareAddress));
  Start({Printer("A1")});
  framework.SetUpdPort(6999);
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(List(), NUV_NOT_FOUND); }),
              HasSubstr("port 6999 cannot be bound"));
  framework.SetUpdPort(kDefaultSearchPort);
}

// On different threads of one host.
TEST_F(DevicesTest, TheSearchMessageIsSetWhileSearchesReadIt) {
  SearchSettings& settings = SearchSettings::Instance();
  const std::string before = settings.Message();
  const std::string other = before + std::string(100, ' ');
  std::thread setter([&] {
    for (int i = 0; i < 1000; ++i) settings.SetMessage(i % 2 == 0 ? other : before);
  });
  for (int i = 0; i < 1000; ++i) EXPECT_THAT(settings.Message(), AnyOf(before, other));
  setter.join();
  settings.SetMessage(before);
}

TEST_F(DevicesTest, SearchSettingsOutliveTheFramework) {
  Start({Printer("A1")});
  SearchSettings::Instance().SetTimeoutMs(1);
  {
    ConnectingFramework other(clock, kReplyTimeoutMs);
    other.SetUpdPort(6999);
  }
  EXPECT_EQ(List(), NUV_NOT_FOUND) << "nobody answers on that port";
  EXPECT_EQ(SearchSettings::Instance().TimeoutMs(), kSearchMs) << "a listing hands its own on";
  framework.SetBroadCastPort(kDefaultSearchPort);
  framework.GetConnect()->SetSearchMessage("F999\r\n");
  EXPECT_EQ(List(), NUV_NOT_FOUND) << "nobody answers that";
  framework.GetConnect()->SetSearchMessage(kDefaultSearchMessage);
  Commits("late,code=195,ms=30");
  EXPECT_EQ(List(), NUV_OK);
  EXPECT_EQ(EffectiveTimeoutMs(0), 3000);
  EXPECT_EQ(EffectiveTimeoutMs(-1), 3000) << "a negative limit must not wait for ever";
  EXPECT_EQ(EffectiveTimeoutMs(1), 1);
}

}  // namespace
}  // namespace Nuv::Connect
