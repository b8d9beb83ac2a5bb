// What is computed from addresses and read from search replies; searching itself is tested with the
// simulator in tests/connect.

#include <gtest/gtest.h>

#include "tests/support/told.h"
#include "transport/addresses.h"
#include "transport/discovery_reply.h"
#include "transport/search_addresses.h"

using namespace Nuv::Transport;

namespace {

TEST(BroadcastAddressTest, ReachesTheWholeNetwork) {
  for (const auto& [address, netmask, broadcast] :
       {std::tuple("192.168.1.10", "255.255.255.0", "192.168.1.255"),
        {"192.168.1.10", "255.255.0.0", "192.168.255.255"},
        {"10.0.5.7", "255.255.255.252", "10.0.5.7"},
        {"10.0.5.5", "255.255.255.252", "10.0.5.7"},
        {"10.0.5.7", "", "255.255.255.255"},
        {"10.0.5.7", "255.x.0.0", "10.255.255.255"}}) {
    EXPECT_EQ(DirectedBroadcast(address, netmask), broadcast) << address << " / " << netmask;
  }
  EXPECT_TRUE(IsLoopback("127.0.0.1"));
  EXPECT_TRUE(IsLoopback("127.0.1.1"));
  EXPECT_FALSE(IsLoopback("128.0.0.1"));
}

TEST(LiteralAddressTest, IsWhatNeedsNoLookUp) {
  for (const auto& [text, address] : {std::pair("10.0.0.2", "10.0.0.2"),
                                      {"10.0.0.2 ", "10.0.0.2"},
                                      {"FE80::0:1", "fe80::1"},
                                      {"localhost", ""},
                                      {"10.0.0.2.example", ""},
                                      {"10.0.0.256", ""},
                                      {"", ""}}) {
    EXPECT_EQ(LiteralAddress(text), address) << text;
  }
}

TEST(SearchAddressesTest, ItemsThatNobodyCanAskAreNotUnderstood) {
  int listings = 0;
  const auto broadcasts = [&] {
    ++listings;
    return std::vector<std::string>{"10.0.5.255"};
  };
  const auto read = [&](const std::string& text) {
    listings = 0;
    const SearchAddresses addresses = ParseSearchAddresses(text, 6013, broadcasts);
    std::string items = addresses.broadcast ? "broadcast" : "";
    for (const auto& [address, port] : addresses.asked) {
      items += " " + NumberToDotted(address) + ":" + std::to_string(port);
    }
    for (const std::string& each : addresses.notUnderstood) items += " !" + each;
    return items;
  };
  for (const auto& [text, items] :
       {std::pair("10.0.5.7 broadcast\t10.0.6.2:6014 10.0.5.7:6013",
                  "broadcast 10.0.5.7:6013 10.0.6.2:6014"),
        {" 127.0.0.1:1 223.255.255.255:65535 ", " 127.0.0.1:1 223.255.255.255:65535"},
        {"10.0.5.255 224.0.0.251 255.255.255.255 0.0.0.0",
         " !10.0.5.255 !224.0.0.251 !255.255.255.255 !0.0.0.0"},
        {"10.5 10.0.5.07 10.0.5.256 10.0.5.7.1 -1.0.0.1 printer Broadcast",
         " !10.5 !10.0.5.07 !10.0.5.256 !10.0.5.7.1 !-1.0.0.1 !printer !Broadcast"},
        {"1.2.3.4: 1.2.3.4:0 1.2.3.4:65536 1.2.3.4:4294973309 1.2.3.4:x 1.2.3.4:6.0 1.2.3.4:1:2",
         " !1.2.3.4: !1.2.3.4:0 !1.2.3.4:65536 !1.2.3.4:4294973309 !1.2.3.4:x !1.2.3.4:6.0 "
         "!1.2.3.4:1:2"}}) {
    EXPECT_EQ(read(text), items);
    EXPECT_LE(listings, 1);
  }
  read("10.0.5.1 10.0.5.2 10.0.5.4");
  EXPECT_EQ(listings, 0) << "no network's broadcast address";
  std::string many;
  for (uint32_t i = 1; i <= SearchAddresses::kMost + 1; ++i)
    many += NumberToDotted(1 << 24 | i) + " ";
  const SearchAddresses most = ParseSearchAddresses(many + many, 1, broadcasts);
  EXPECT_EQ(most.asked.size(), SearchAddresses::kMost);
  EXPECT_EQ(most.notUnderstood.size(), 2U) << "the last one, each time";
}

TEST(DiscoveryReplyTest, FieldsAreReadFromTheReply) {
  const std::pair<const char*, const char*> rows[] = {
      {"F195 OK IP=<10.0.0.2> PORT=6020 N=<Lab> M:02:00:5E CN:1\r\n", "10.0.0.2|6020|Lab|02:00:5E"},
      {"  F195 OK IP=<10.0.0.2> PORT=1 N=<Big  Lab> M:aa CN:1", "10.0.0.2|1|Big  Lab|aa"},
      // A name whose word begins with M ends there: the printers' own way of writing has no quotes.
      {"F195 OK N=<Lab Mini> IP=<10.0.0.2> PORT=1 M:aa", "10.0.0.2|1|La|aa"},
      {"F195 OK IP=<10.0.0.2> PORT=1\n N=<Lab> M:aa", "10.0.0.2|1|Lab|aa"},
      {"F195 OK", "|0||"},
      {"F195 OK PORT=65535", "|65535||"},
      {"F195 OK IP=< IP=<10.0.0.3> PORT=2", "10.0.0.3|2||"},
      {"F195 OK IP=<10.0.0.2> PORT=65536", "none"},
      {"F195 OK IP=<10.0.0.2> PORT=12a", "none"},
      {"F195 OK IP=<10.0.0.2> PORT=-1", "none"},
      {"F195 ok IP=<10.0.0.2> PORT=1", "none"},
      {"F195", "none"},
      {"", "none"},
      {"M-SEARCH * HTTP/1.1\r\nHOST: x\r\n", "none"},
  };
  for (const auto& [reply, expected] : rows) {
    NetworkDevice found;
    const std::string told = ToldBy([&, text = reply] { found = ParseDiscoveryReply(text); });
    const std::string device =
        found.address + "|" + std::to_string(found.port) + "|" + found.name + "|" + found.mac;
    EXPECT_EQ(found.valid ? device : "none", expected) << reply;
    // What is no answer of a printer at all goes without a word.
    const bool isPrinters = std::string(reply).find(" OK IP=") != std::string::npos;
    EXPECT_EQ(told.empty(), found.valid || !isPrinters) << reply;
  }
}

}  // namespace
