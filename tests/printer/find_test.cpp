// Finding printers through the C++ layer, in a lab of simulated ones on two private networks.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "tests/printer/printer_lab.h"
#include "tests/support/environment.h"

extern "C" nuv_identity first_printer(const char* addresses);

namespace {

using nuv::Identity;
using nuv::Result;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

// A simulated printer answers within a few milliseconds, but the machine may have more to do.
constexpr std::chrono::seconds kShort(3);
constexpr std::chrono::milliseconds kForNobody(100);
constexpr std::chrono::hours kForEver(1);

class FindTest : public PrinterLab {
 protected:
  void SetUp() override {
    PrinterLab::SetUp();
    options.addresses = "broadcast";
    call.timeLimit = kShort;
  }
  static NuvSim::PrinterConfig Printer(const std::string& serial,
                                       const std::string& address = "10.77.1.2",
                                       const std::string& model = "Zafel Superfine") {
    return Config(serial, address, model);
  }

  // Each printer found: serial number (or address) and how asking it went.
  Texts Found() {
    Texts found;
    for (const Identity& each : nuv::Find(options, call)) {
      found.push_back(each.serial.value_or(each.address) + ": " +
                      nuv_result_text(static_cast<nuv_result>(each.contact)));
    }
    return found;
  }
  // What a search fails with: the reason in words, then the error's text.
  std::string Failure() {
    try {
      nuv::Find(options, call);
    } catch (const nuv::Error& error) {
      return error.code().message() + " / " + error.what();
    }
    return "none";
  }

  nuv::SearchOptions options;
  nuv::Call call;
};

TEST_F(FindTest, TellsWhoThePrintersOfAllNetworksAre) {
  auto named = Printer("A1");
  named.nickname = "by the window: left";
  auto dental = Printer("DENTAL01", "10.77.2.2", "BEGO VARSEO XS");
  Start({named, dental});
  std::vector<Identity> told;
  options.found = [&](const Identity& each) {
    told.push_back(each);
    return told.size() < 2;
  };
  call.timeLimit = kForEver;
  ASSERT_EQ(nuv::Find(options, call).size(), 2U) << "over when the closure has what it wants";
  const Identity& first = told[told[0].serial == "A1" ? 0 : 1];
  const Identity& second = told[told[0].serial == "A1" ? 1 : 0];
  EXPECT_EQ(first.link, nuv::Link::kNetwork);
  EXPECT_EQ(first.address, "10.77.1.2");
  EXPECT_EQ(first.tcpPort, simulator->TcpPort(0));
  EXPECT_EQ(first.name, "printer-A1");
  EXPECT_EQ(first.model, "Zafel Superfine");
  EXPECT_EQ(first.nickname, "by the window: left");
  EXPECT_TRUE(first.mac && first.firmware && first.controller);
  EXPECT_FALSE(first.manufactured || first.textsAltered);
  EXPECT_EQ(second.serial, "DENTAL01") << "the whole one";
  EXPECT_TRUE(second.manufactured);

  // One that this process has open is asked over that connection.
  const nuv::Printer open = nuv::Printer::Open(first);
  ASSERT_TRUE(simulator->WaitUntil([&] { return simulator->Status().connected; }, kForEver));
  told.clear();
  call.timeLimit = kForEver;
  nuv::Find(options, call);
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0].contact, Result::kOk);
  EXPECT_EQ(told[1].contact, Result::kOk);

  options.found = nullptr;
  options.addressesOnly = true;
  call.timeLimit = kShort;
  const auto accepted = simulator->Totals().requests;
  EXPECT_THAT(Found(), UnorderedElementsAre("10.77.1.2: done", "10.77.2.2: done"));
  EXPECT_EQ(simulator->Totals().requests, accepted) << "nobody was asked";
}

TEST_F(FindTest, WhoStaysSilentOrRefusesIsAPrinterToo) {
  const std::pair<const char*, const char*> rows[] = {
      {"silent,code=101,count=-1", "10.77.1.2: the printer did not answer"},
      {"refuse,code=101,count=-1", "10.77.1.2: the printer refused"},
      {"garbage,code=101,count=-1", "10.77.1.2: the printer's answer cannot be read"},
      {"silent,code=197,count=-1", "10.77.1.2: the printer did not answer"},
      {"refuse,code=197,count=-1", "A1: done"},
  };
  Start({Printer("A1"), Printer("A2", "10.77.2.2")});
  options.addresses = "10.77.1.2 10.77.2.2";
  for (const auto& [fault, expected] : rows) {
    simulator->ClearFaults(0);
    Commits(fault);
    call.timeLimit = kForEver;  // over when both are asked
    if (std::string(fault).find("silent") == 0) call.timeLimit = kShort;
    const Texts found = Found();
    const bool keepsSerial = std::string(fault) == rows[3].first;
    EXPECT_THAT(found, UnorderedElementsAre(
                           keepsSerial ? "A1: the printer did not answer" : expected, "A2: done"))
        << fault;
  }
  simulator->ClearFaults(0);
  options.addresses = "broadcast";
  call.timeLimit = kShort;
  Commits("malformed,count=-1,text=F195 OK IP=<10.77.1.2> PORT=1 N=<x> M:0 CN:0");
  EXPECT_THAT(Found(), UnorderedElementsAre("10.77.1.2: the printer cannot be reached", "A1: done",
                                            "A2: done"));
}

// It has no address of its own: other machines reach it on each network.
TEST_F(FindTest, APrinterOnEveryNetworkIsOne) {
  Start({Printer("A1", "")});
  call.timeLimit = kShort;
  EXPECT_THAT(Found(), ElementsAre("A1: done"));
}

// Both broadcast from the same port, which belongs to one search at a time.
TEST_F(FindTest, TwoAtTheSameTimeBothFind) {
#ifdef _WIN32
  GTEST_SKIP() << "the system decides which of several sockets gets an answer";
#endif
  Start({Printer("A1")});
  call.timeLimit = kShort;
  auto other = std::async(std::launch::async, [&] { return nuv::Find(options, call).size(); });
  EXPECT_EQ(nuv::Find(options, call).size(), 1U);
  EXPECT_EQ(other.get(), 1U);
}

// What stands behind them is one printer, which has but a client at a time.
TEST_F(FindTest, ManyAreAskedAFewAtOnce) {
  Start({Printer("A1")});
  Commits("burst,n=60");
  const Texts found = Found();
  EXPECT_EQ(found.size(), 61U);
  EXPECT_THAT(found, ::testing::Contains("A1: done"));
}

// More than are asked at once, none of which says who it is.
TEST_F(FindTest, WhoIsNotAskedInTimeIsAPrinterToo) {
  Start({Printer("A1")});
  Commits("burst,n=40");
  Commits("silent,code=101,count=-1");
  Commits("malformed,text=F195 OK IP=<10.77.1.200> PORT=1 N=<nobody> M:0 CN:0");
  call.timeLimit = std::chrono::seconds(1);
  const auto found = nuv::Find(options, call);
  EXPECT_EQ(found.size(), 42U);
  for (const Identity& each : found) EXPECT_EQ(each.contact, Result::kNoAnswer);
}

TEST_F(FindTest, AddressesAreAskedOneByOne) {
  Start({Printer("A1"), Printer("A2", "10.77.2.2"), Printer("L1", "127.0.0.1")});
  call.timeLimit = kForEver;
  options.addresses = "127.0.0.1 10.77.2.2:6013";
  EXPECT_THAT(Found(), UnorderedElementsAre("L1: done", "A2: done"))
      << "over when all have answered";
  EXPECT_EQ(simulator->Totals(2).searches, 1U) << "asked once";
  EXPECT_STREQ(first_printer("127.0.0.1").serial.text, "L1");
  call.timeLimit = kForNobody;
  options.addresses = "127.0.0.1:6014";
  EXPECT_THAT(Found(), IsEmpty()) << "nobody asks that port";
  call.timeLimit = kForEver;
  options.udpPort = 6014;
  options.addresses = "127.0.0.1:6013";
  EXPECT_THAT(Found(), ElementsAre("L1: done"));
  options.udpPort = 0;
#ifndef _WIN32  // where who listens for broadcasts takes what is sent to its own machine
  call.timeLimit = kShort;
  options.addresses = "broadcast 127.0.0.1";
  EXPECT_THAT(Found(), UnorderedElementsAre("A1: done", "A2: done", "L1: done"));
  call.timeLimit = kForEver;
  Start({Printer("L1", "127.0.0.1"), Printer("L2", "127.0.0.2"), Printer("L3", "127.0.0.3"),
         Printer("L4", "127.0.0.4"), Printer("L5", "127.0.0.5")});
  Commits("late,code=195,ms=300");
  options.addresses = "127.0.0.1 127.0.0.2 127.0.0.3 127.0.0.4 127.0.0.5";
  EXPECT_EQ(Found().size(), 5U) << "answers of some do not end the wait for others";
  Start({Printer("A1"), Printer("A2", "10.77.2.2"), Printer("L1", "127.0.0.1")});
#endif
  options.addresses.reset();
  SetEnvironment("NUVCONNECT_SEARCH", "127.0.0.1 nowhere");
  EXPECT_THAT(Found(), ElementsAre("L1: done"));
  SetEnvironment("NUVCONNECT_SEARCH", "");
  options.links = {nuv::Link::kUsb};
  EXPECT_THAT(Found(), IsEmpty()) << "only the network has any";

  options = {};
  call.timeLimit = kShort;
  std::string many = "127.0.0.1";
  for (int i = 1; i < 1000; ++i)
    many += " 127.1." + std::to_string(i / 200) + "." + std::to_string(i % 200 + 1);
  options.addresses = many;
  EXPECT_THAT(Found(), ElementsAre("L1: done"));
  for (const char* const wrong : {"nowhere", "10.77.1.255", "224.0.0.1", "10.0.5", "10.0.5.7:0"}) {
    options.addresses = std::string("127.0.0.1 ") + wrong;
    EXPECT_EQ(Failure(), std::string("an argument is not valid / \"") + wrong +
                             "\" is no address that can be asked");
  }
  options.addresses = many + " 127.2.0.1";
  EXPECT_THAT(Failure(), HasSubstr("\"127.2.0.1\""));
  options.addresses = " ";
  EXPECT_THAT(Failure(), HasSubstr("no address to search"));
}

TEST_F(FindTest, EndsWhenNobodyWantsItAnyMore) {
  Start({Printer("A1")});
  call.timeLimit = kForEver;
  int asked = 0;
  call.stillWanted = [&] { return ++asked < 3; };
  EXPECT_THAT(Failure(), StartsWith("it was cancelled / "));
  EXPECT_EQ(asked, 3);
  call.stillWanted = []() -> bool { throw std::runtime_error("mine"); };
  EXPECT_THROW(nuv::Find(options, call), std::runtime_error);
  call.stillWanted = nullptr;
  options.found = [](const Identity&) -> bool { throw std::runtime_error("mine"); };
  EXPECT_THROW(nuv::Find(options, call), std::runtime_error);
  // Many have answered while the host looks at the first; it is content with the second.
  Commits("burst,n=20");
  int told = 0;
  options.found = [&](const Identity&) {
    if (++told == 1) Becomes([&] { return simulator->Totals().requests >= 10; });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return told < 2;
  };
  EXPECT_EQ(nuv::Find(options, call).size(), 2U);
  EXPECT_EQ(told, 2);
}

// What a printer says of itself may be anything.
TEST_F(FindTest, TextsAreUtf8AndFit) {
  auto odd = Printer("A1");
  odd.name = "caf\xE9";
  Start({odd});
  options.addressesOnly = true;
  std::vector<Identity> found = nuv::Find(options, call);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].name, "caf\xEF\xBF\xBD");
  EXPECT_TRUE(found[0].textsAltered);
  std::string longName = "xx";
  for (int i = 0; i < 400; ++i) longName += "\xC3\xA9";
  Commits("malformed,count=-1,text=F195 OK IP=<10.77.1.2> PORT=1 N=<" + longName + "> M:0 CN:0");
  found = nuv::Find(options, call);
  ASSERT_EQ(found.size(), 2U);
  const Identity& other = found[found[0].name->front() == 'x' ? 0 : 1];
  EXPECT_EQ(other.name, longName.substr(0, 506)) << "507 would end within a character";
  EXPECT_TRUE(other.textsAltered);
}

}  // namespace
