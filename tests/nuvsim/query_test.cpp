// What is answered besides the examples of docs/protocol.md, as conversations with one printer.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fixture.h"

namespace NuvSim {
namespace {

constexpr const char* kAny = "a model of its own";
constexpr const char* kDental = "BEGO VARSEO XS";

const char* const kNotJoined =
    "F192 OK IP=0.0.0.0 SUB=0.0.0.0 GATE=0.0.0.0 DNS1=0.0.0.0 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:01:01 S:0";
const char* const kWired =
    "F192 OK IP=127.0.0.1 SUB=255.255.255.0 GATE=127.0.0.1 DNS1=127.0.0.1 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:00:01";
const char* const kJoined =
    "F192 OK IP=10.0.6.5 SUB=255.255.255.0 GATE=10.0.6.1 DNS1=10.0.6.1 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:01:01 S:1 C:6 M:1 R:80 SSID=<Lab net>";

const struct {
  const char *what, *model;
  std::vector<std::pair<const char*, const char*>> lines;  // request and reply
} kConversations[] = {
    {"BeforeTheFirstJob",
     kAny,
     {{"F107", "F107 OK L:0 T:0"},
      {"F157", "F157 OK I0 S0"},
      {"F170", "F170 OK I0"},
      {"F171 S1", "F171 NG"},
      {"F174 S1", "F174 NG"},
      {"F104   S2  ", "F104 OK"},
      {"F101x", "F101 NG"}}},
    {"Receiving",
     kAny,
     {{"F103 S100 L1 T-1 R1e300 V1 C-2 E0 H1 Y1 U1 P1", "F103 OK"},
      {"0123456789\r\nF102", "F102 OK S:2"},
      {"F117", "F117 OK S:65524"},
      {"F157", "F157 OK I1 S10"},
      {"F103 S10 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", "F103 NG S:2"},
      {"F175 S1", "F175 OK L1 T1000000000 V1 R3"},
      {"F176 S1", "F176 OK T0 E0 B0 P1"}}},
    {"DentalJob",
     kDental,
     {{"F355 MResin A=P 1=2", "F355 OK M:Resin A"},
      {"F355 MResin", "F355 NG"},
      {"F355 M=P", "F355 NG"},
      {"F367 =", "F367 NG"},
      {"F367 Tooth", "F367 NG"},
      {"F367 =Tooth 1: upper.gcode", "F367 OK N:Tooth 1: upper.gcode"}}},
    {"Nickname",
     kAny,
     {{"F196  My: = <printer>\xc3\xa9 ", "F196 OK"},
      {"F197", "F197 OK N: My: = <printer>\xc3\xa9 "},
      {"F196 ", "F196 OK"},
      {"F197", "F197 OK N:"}}},
    {"NotJoined",
     kAny,
     {{"F190", "F190 OK S:0"},
      {"F190 SLab net", "F190 OK S:0 C:6 M:1 R:80 SSID=<Lab net>"},
      {"F192", kWired},
      {"F192 S1", kNotJoined},
      {"F191 S1 C1 D1 SSID=<Lab net> KEY=<correct horse>", "F191 OK"},
      {"F190 SLab net", "F190 OK S:1 C:6 M:1 R:80 SSID=<Lab net>"},
      {"F192", kJoined},
      {"F191 S2", "F191 OK"},
      {"F192 S1", kNotJoined}}},
};

TEST(ConversationTest, GoesAsOnThePrinter) {
  for (const auto& each : kConversations) {
    SCOPED_TRACE(each.what);
    Bench bench(each.model);
    const auto client = bench.Connect();
    for (const auto& [request, reply] : each.lines) {
      EXPECT_EQ(client->Ask(request), reply) << request;
    }
  }
}

// On an Android-board printer that has joined a network and has one job in its history.
TEST(AnotherFormTest, IsRefusedAndChangesNothing) {
  const std::pair<std::string, std::vector<std::string>> kRefused[] = {
      {"F103",
       {"S1 L1 T1 R1 V1 C1 E1 H1 Y1 U1", "S1 L1 T1 R1 V1 C1 Ex H1 Y1 U1 P1",
        "S1 L1 T1 Rinf V1 C1 E1 H1 Y1 U1 P1", "S1.5 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1"}},
      {"F104", {"", "S1"}},
      {"F141", {"", "S12", "S0,x", "Sx,y"}},
      {"F159", {"S2"}},
      {"F160", {"S1", "S1 C0", "S1 Cx"}},
      {"F169", {"S2"}},
      {"F171", {"S2", "S-1"}},
      {"F174", {"", "S0"}},
      {"F175", {"S2"}},
      {"F186", {"L0", "L5"}},
      {"F188", {""}},
      {"F190", {"SLab"}},
      {"F191",
       {"", "S1 C1 D1 SSID=<Lab net> KEY=<correct  horse>",
        "S1 C0 D1 SSID=<Lab net> KEY=<correct horse>",
        "S1 C1 D0 SSID=<Lab net> KEY=<correct horse>", "S1 C1 D1 SSID=<Lab net> KEY=<correct horse",
        "S1 C1 D1 SSID=<Far net> KEY=<correct horse>", "S1 C0 D1 SSID=<Open net> KEY=<x>"}},
      {"F192", {"S2"}},
      {"F196", {""}},
      {"F303", {"S0", "S5"}},
      {"F332", {"S0", "S0 V-1", "S0 V101", "S0 V5x", "S1 V-501", "S1 V501", "S2 V1"}},
      {"F370", {"X0,1 Y1,1 Z1,1", "X1,1 Y1,1 Z1,10.000001", "X1,1 Y1,nan Z1,1", "X1,1 Y1 Z1,1"}},
      {"F501", {"S0 N<Thumbnail.png>", "S5 NThumbnail.png"}},
      {"F504", {"A1"}},
      {"F506", {"S1 A0 Cx", "S1 A5", "Sa A5 Cx"}},
      {"F507", {""}},
      {"F508", {"S5 V0123 N<x>"}},
      {"F99999999999", {""}},
  };
  Bench bench(kAny);
  const auto client = bench.Connect();
  client->Send(JobRequest(0, 0));
  ASSERT_EQ(client->ReadLine(), "F103 OK");
  ASSERT_EQ(client->Ask("F191 S1 C0 D1 SSID=<Open net> KEY=<>"), "F191 OK");
  for (const auto& [command, forms] : kRefused) {
    for (const std::string& form : forms) {
      const std::string answer = client->Ask(form.empty() ? command : command + " " + form);
      EXPECT_EQ(answer.substr(0, command.size() + 3), command + " NG") << form;
    }
  }
  EXPECT_EQ(client->Ask("F159 S0"), "F159 OK S0 V80");
  EXPECT_EQ(client->Ask("F170"), "F170 OK I0");
  EXPECT_EQ(client->Ask("F190"), "F190 OK S:1 C:11 M:0 R:40 SSID=<Open net>");
  EXPECT_EQ(client->Ask("F369").substr(0, 28), "F369 OK X:1.000000,1.000000 ");
  EXPECT_TRUE(bench.sim->Received().empty());
}

}  // namespace
}  // namespace NuvSim
