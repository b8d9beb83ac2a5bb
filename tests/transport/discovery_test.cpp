// What is computed from addresses and read from search replies; searching itself is tested with the
// simulator in tests/connect.

#include <gtest/gtest.h>

#include "transport/broadcast_address.h"
#include "transport/discovery_reply.h"

namespace {

TEST(BroadcastAddressTest, ReachesTheWholeNetwork) {
  struct Row {
    const char* address;
    const char* netmask;
    const char* broadcast;
  };
  const Row rows[] = {
      {"192.168.1.10", "255.255.255.0", "192.168.1.255"},
      {"192.168.1.10", "255.255.0.0", "192.168.255.255"},
      {"10.0.5.7", "255.255.255.252", "10.0.5.7"},
      {"10.0.5.5", "255.255.255.252", "10.0.5.7"},
      {"10.0.5.7", "", "255.255.255.255"},
      {"10.0.5.7", "255.x.0.0", "10.255.255.255"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(DirectedBroadcast(row.address, row.netmask), row.broadcast)
        << row.address << " / " << row.netmask;
  }
  EXPECT_TRUE(IsLoopback("127.0.0.1"));
  EXPECT_TRUE(IsLoopback("127.0.1.1"));
  EXPECT_FALSE(IsLoopback("128.0.0.1"));
}

TEST(DiscoveryReplyTest, FieldsAreReadFromTheReply) {
  struct Row {
    const char* reply;
    bool valid;
    const char* address;
    int port;
    const char* name;
    const char* mac;
  };
  const Row rows[] = {
      {"F195 OK IP=<10.0.0.2> PORT=6020 N=<Lab> M:02:00:5E CN:1\r\n", true, "10.0.0.2", 6020, "Lab",
       "02:00:5E"},
      {"  F195 OK IP=<10.0.0.2> PORT=1 N=<Big  Lab> M:aa CN:1", true, "10.0.0.2", 1, "Big  Lab",
       "aa"},
      // A name whose word begins with M ends there: the printers' own way of writing has no quotes.
      {"F195 OK N=<Lab Mini> IP=<10.0.0.2> PORT=1 M:aa", true, "10.0.0.2", 1, "La", "aa"},
      {"F195 OK", true, "", 0, "", ""},
      {"F195 OK PORT=65535", true, "", 65535, "", ""},
      {"F195 OK IP=< IP=<10.0.0.3> PORT=2", true, "10.0.0.3", 2, "", ""},
      {"F195 OK IP=<10.0.0.2> PORT=65536", false, "", 0, "", ""},
      {"F195 OK IP=<10.0.0.2> PORT=12a", false, "", 0, "", ""},
      {"F195 OK IP=<10.0.0.2> PORT=-1", false, "", 0, "", ""},
      {"F195 ok IP=<10.0.0.2> PORT=1", false, "", 0, "", ""},
      {"F195", false, "", 0, "", ""},
      {"", false, "", 0, "", ""},
      {"M-SEARCH * HTTP/1.1\r\nHOST: x\r\n", false, "", 0, "", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.reply);
    const NetworkDevice device = ParseDiscoveryReply(row.reply);
    EXPECT_EQ(device.valid, row.valid);
    if (!row.valid) continue;
    EXPECT_EQ(device.address, row.address);
    EXPECT_EQ(device.port, row.port);
    EXPECT_EQ(device.name, row.name);
    EXPECT_EQ(device.mac, row.mac);
  }
}

}  // namespace
