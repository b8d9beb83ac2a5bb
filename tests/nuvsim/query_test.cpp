// What the queries and settings answer, as conversations with one printer.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "bench.h"

namespace nuvsim {
namespace {

constexpr const char* kAny = "a model of its own";
constexpr const char* kDental = "BEGO VARSEO XS";
constexpr const char* kThreeLines = "Fabrix150 xP";

struct Conversation {
  const char* what;
  const char* model;
  std::vector<std::pair<const char*, const char*>> lines;  // request and reply
};

void PrintTo(const Conversation& row, std::ostream* stream) { *stream << row.what; }

class ConversationTest : public testing::TestWithParam<Conversation> {};

TEST_P(ConversationTest, GoesAsOnThePrinter) {
  Bench bench([](PrinterConfig& printer) {
    printer.model = GetParam().model;
    printer.serial = "3DPSNKGB3WTW00001";
    printer.accessPoints.push_back({"a> KEY=<b> = :c", "<k> =:", 1, 60});
  });
  const auto client = bench.Connect();
  for (const auto& [request, reply] : GetParam().lines) {
    EXPECT_EQ(client->Ask(request), reply) << request;
  }
}

const Conversation kIdentity[] = {
    {"DentalIdentity",
     kDental,
     {{"F101", "F101 OK V:1.0.0 N:nuvsim M:BEGO VARSEO XS S:W00001 C:1.0"},
      {"F140", "F140 OK S3DPSNKGB3WTW00001"},
      {"F354", "F354 OK V:1.0.0 N:nuvsim M:BEGO VARSEO XS S:3DPSNKGB3WTW00001 C:1.0 D:20240131"}}},
    {"WarmUp", kAny, {{"F112", "F112 OK"}}},
    {"AndroidVersion", kAny, {{"F310", "F310 OK V:2.1.0 L:1.4"}}},
    {"PanelVersion",
     kAny,
     {{"F504 A0", "F504 OK V:3.0.2"}, {"F504 A1", "F504 NG"}, {"F504", "F504 NG"}}},
    {"Resin105", kAny, {{"F105", "F105 OK S:1 R:350 C:1001 V:500 Q:L0001"}}},
    {"Resin120", kAny, {{"F120", "F120 OK S1 R350 D20270131 T1001"}}},
    {"DentalResin", kDental, {{"F356", "F356 OK N:Resin A L:L0001 D:20270131 V:350"}}},
    {"OpenMode", kAny, {{"F335", "F335 OK S:1"}}},
    {"BufferOfBoard", kAny, {{"F503", "F503 OK S:65536"}}},
    {"DentalJob",
     kDental,
     {{"F353", "F353 OK S:0 M:512"},
      {"F355 MResin A=P 1=2", "F355 OK M:Resin A"},
      {"F355 MResin", "F355 NG"},
      {"F355 M=P", "F355 NG"},
      {"F355", "F355 NG"},
      {"F367 =Tooth 1: upper.gcode", "F367 OK N:Tooth 1: upper.gcode"},
      {"F367 =", "F367 NG"},
      {"F367 Tooth", "F367 NG"}}},
};

const Conversation kSettings[] = {
    {"LaserPower",
     kAny,
     {{"F159 S0", "F159 OK S0 V80"},
      {"F332 S0 V0", "F332 OK"},
      {"F332 S0 V100", "F332 OK"},
      {"F332 S0 V101", "F332 NG"},
      {"F332 S0 V-1", "F332 NG"},
      {"F332 S0 V5x", "F332 NG"},
      {"F332 S0", "F332 NG"},
      {"F332 S0 V1 C1", "F332 NG"},
      {"F159 S0", "F159 OK S0 V100"}}},
    {"ZCompensation",
     kDental,
     {{"F159 S1", "F159 OK S1 V0"},
      {"F332 S1 V-500", "F332 OK"},
      {"F332 S1 V-501", "F332 NG"},
      {"F332 S1 V501", "F332 NG"},
      {"F159 S1", "F159 OK S1 V-500"}}},
    {"NoSuchSetting",
     kAny,
     {{"F159 S2", "F159 NG"}, {"F159", "F159 NG"}, {"F332 S2 V1", "F332 NG"}}},
    {"Nickname",
     kAny,
     {{"F197", "F197 OK N:Simulated printer"},
      {"F196  My: = <printer>\xc3\xa9 ", "F196 OK"},
      {"F196", "F196 NG"},
      {"F197", "F197 OK N: My: = <printer>\xc3\xa9 "},
      {"F196 ", "F196 OK"},
      {"F197", "F197 OK N:"}}},
    {"Scaling",
     kAny,
     {{"F369", "F369 OK X:1.000000,1.000000 Y:1.000000,1.000000 Z:1.000000,1.000000"},
      {"F370 X0.5,1.25 Y10,0.000001 Z1.000000,2", "F370 OK"},
      {"F370 X0,1 Y1,1 Z1,1", "F370 NG"},
      {"F370 X1,1 Y1,1 Z1,10.000001", "F370 NG"},
      {"F370 X1,1 Y1,-1 Z1,1", "F370 NG"},
      {"F370 X1,1 Y1,nan Z1,1", "F370 NG"},
      {"F370 X1,1 Y1 Z1,1", "F370 NG"},
      {"F370 X1,1 Z1,1 Y1,1", "F370 NG"},
      {"F370 X1,1 Y1,1", "F370 NG"},
      {"F369", "F369 OK X:0.500000,1.250000 Y:10.000000,0.000001 Z:1.000000,2.000000"}}},
};

const char* const kNotJoined =
    "F192 OK IP=0.0.0.0 SUB=0.0.0.0 GATE=0.0.0.0 DNS1=0.0.0.0 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:01:01 S:0";
const char* const kJoined =
    "F192 OK IP=10.0.6.5 SUB=255.255.255.0 GATE=10.0.6.1 DNS1=10.0.6.1 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:01:01 S:1 C:6 M:1 R:80 SSID=<Lab net>";
const char* const kWired =
    "F192 OK IP=127.0.0.1 SUB=255.255.255.0 GATE=127.0.0.1 DNS1=127.0.0.1 DNS2=0.0.0.0 "
    "MAC=02:00:00:00:00:01";

const Conversation kNetwork[] = {
    {"AccessPoints",
     kAny,
     {{"F198", "F198 OK SSID=<Lab net> SSID=<a> KEY=<b> = :c> SSID=<Open net>"},
      {"F190 SLab net", "F190 OK S:0 C:6 M:1 R:80 SSID=<Lab net>"},
      {"F190 SOpen net", "F190 OK S:0 C:11 M:0 R:40 SSID=<Open net>"},
      {"F190 SLab", "F190 NG"},
      {"F190 S", "F190 NG"},
      {"F190 Lab net", "F190 NG"}}},
    {"Joining",
     kAny,
     {{"F190", "F190 OK S:0"},
      {"F192", kWired},
      {"F192 S1", kNotJoined},
      {"F191 S1 C1 D1 SSID=<Lab net> KEY=<correct horse>", "F191 OK"},
      {"F190", "F190 OK S:1 C:6 M:1 R:80 SSID=<Lab net>"},
      {"F190 SLab net", "F190 OK S:1 C:6 M:1 R:80 SSID=<Lab net>"},
      {"F190 SOpen net", "F190 OK S:0 C:11 M:0 R:40 SSID=<Open net>"},
      {"F192", kJoined},
      {"F192 S1", kJoined},
      {"F192 S0", kWired},
      {"F191 S2", "F191 OK"},
      {"F190", "F190 OK S:0"},
      {"F192 S1", kNotJoined},
      {"F192", kWired}}},
    {"JoiningAnother",
     kAny,
     {{"F191 S1 C0 D1 SSID=<Open net> KEY=<>", "F191 OK"},
      {"F190", "F190 OK S:1 C:11 M:0 R:40 SSID=<Open net>"},
      {"F191 S1 C1 D1 SSID=<a> KEY=<b> = :c> KEY=<<k> =:>", "F191 OK"},
      {"F190", "F190 OK S:1 C:1 M:1 R:60 SSID=<a> KEY=<b> = :c>"}}},
    {"RefusedJoinsChangeNothing",
     kAny,
     {{"F191 S1 C0 D1 SSID=<Open net> KEY=<>", "F191 OK"},
      {"F191 S1 C1 D1 SSID=<Lab net> KEY=<correct  horse>", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<Lab net> KEY=<>", "F191 NG"},
      {"F191 S1 C0 D1 SSID=<Lab net> KEY=<correct horse>", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<Open net> KEY=<>", "F191 NG"},
      {"F191 S1 C0 D1 SSID=<Open net> KEY=<x>", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<Far net> KEY=<correct horse>", "F191 NG"},
      {"F191 S1 C1 D0 SSID=<Lab net> KEY=<correct horse>", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<Lab net> KEY=<correct horse", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<Lab net>", "F191 NG"},
      {"F191 S1 C1 D1 SSID=<", "F191 NG"},
      {"F191 S3", "F191 NG"},
      {"F191", "F191 NG"},
      {"F190", "F190 OK S:1 C:11 M:0 R:40 SSID=<Open net>"}}},
    {"NoSuchPort", kAny, {{"F192 S2", "F192 NG"}, {"F192 x", "F192 NG"}}},
};

const Conversation kLightEngine[] = {
    {"Photodiode",
     kAny,
     {{"F186 L1", "F186 OK L11 H901 A501"},
      {"F186 L4", "F186 OK L14 H904 A504"},
      {"F186 L0", "F186 NG"},
      {"F186 L5", "F186 NG"},
      {"F186", "F186 NG"}}},
    {"PulseWidths",
     kAny,
     {{"F303 S2", "F303 OK LSU:2 P1:102 P2:202 P3:302 P4:402 P5:502"},
      {"F303 S0", "F303 NG"},
      {"F303 S5", "F303 NG"},
      {"F303", "F303 NG"}}},
    {"Sensors",
     kAny,
     {{"F301",
       "F301 OK C_T:28 C_B:27 ZLT:0 ZLB:1 V_S:2 L_S:80 W_H:1 Y_H:1 C_LI:1 C_P:1 P_S:1 Y_F:0 "
       "T_T:30"}}},
    {"ScanUnitFlash", kAny, {{"F327", "F327 OK C:1 L:2 P:3 S:4 T:5 W:6 Y:7"}}},
    {"FlashOfThreeLines",
     kThreeLines,
     {{"F327", "F327 OK C1:1 C2:2 C3:3 L1:4 L2:5 L3:6 T1:7 T2:8 T3:9 Z1:10 Z2:11"}}},
    {"LightHours", kAny, {{"F708", "F708 OK H:1234"}}},
};

INSTANTIATE_TEST_SUITE_P(Identity, ConversationTest, testing::ValuesIn(kIdentity));
INSTANTIATE_TEST_SUITE_P(Settings, ConversationTest, testing::ValuesIn(kSettings));
INSTANTIATE_TEST_SUITE_P(Network, ConversationTest, testing::ValuesIn(kNetwork));
INSTANTIATE_TEST_SUITE_P(LightEngine, ConversationTest, testing::ValuesIn(kLightEngine));

TEST(SelfTestTest, IsAnsweredByTwoLinesEachOfThemLogged) {
  SimulatorConfig config;
  config.printers = {LoopbackPrinter()};
  std::string log;
  config.log = [&log](const LogEntry& entry) { log += entry.text + "|"; };
  Simulator sim(config);
  sim.Start();
  sim.InjectFault(0, ParseFault("twice,code=160,skip=1"));
  RawClient client(sim.TcpPort());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(i == 2 ? client.ReadLine() : client.Ask("F160 SZ C12"), "F160 OK START");
    EXPECT_EQ(client.ReadLine(), "F160 OK FINISH");
  }
  for (const char* request : {"F160", "F160 S1", "F160 S C1", "F160 S1 C0", "F160 S1 Cx"}) {
    EXPECT_EQ(client.Ask(request), "F160 NG") << request;
  }
  sim.Stop();
  EXPECT_EQ(log.substr(0, log.find("F160|")),
            "F160 SZ C12|F160 OK START|F160 OK FINISH|"
            "F160 SZ C12|(fault twice) F160 OK START|(fault twice) F160 OK FINISH|");
}

TEST(ConfiguredTest, ValuesAreAnswered) {
  Bench bench([](PrinterConfig& printer) {
    printer.model = "of its own";
    printer.androidVersion = "7.1";
    printer.loaderVersion = "7.2";
    printer.panelVersion = "7.3";
    printer.ledHours = 0;
    printer.openMode = false;
    printer.sensors = {{"C_B", -7}, {"C_LI", 0}};
    printer.accessPoints.clear();
    printer.resin.useBy = "20300101";
    printer.resin.type = "DP-7";
    printer.resin.tagRegistered = false;
  });
  const auto client = bench.Connect();
  for (const auto& [request, reply] : std::vector<std::pair<const char*, const char*>>{
           {"F310", "F310 OK V:7.1 L:7.2"},
           {"F504 A0", "F504 OK V:7.3"},
           {"F708", "F708 OK H:0"},
           {"F335", "F335 OK S:0"},
           {"F219", "F219 NG"},
           {"F198", "F198 OK"},
           {"F120", "F120 OK S1 R350 D20300101 TDP-7"},
           {"F301",
            "F301 OK C_T:28 C_B:-7 ZLT:0 ZLB:1 V_S:2 L_S:80 W_H:1 Y_H:1 C_LI:0 C_P:1 P_S:1 "
            "Y_F:0 T_T:30"}}) {
    EXPECT_EQ(client->Ask(request), reply);
  }
  bench.sim->SetResinRefusal(0, 4);
  EXPECT_EQ(client->Ask("F105"), "F105 NG S:4");
  EXPECT_EQ(client->Ask("F120"), "F120 NG S4");
}

}  // namespace
}  // namespace nuvsim
