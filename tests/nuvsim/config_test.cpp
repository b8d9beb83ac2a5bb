// The configuration file.

#include "nuvsim/config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "fixture.h"
#include "nuvsim/json_object.h"

namespace NuvSim {
namespace {

using testing::HasSubstr;

TEST(ConfigTest, KeysReachTheirPlaces) {
  const SimulatorConfig config = ParseConfig(R"({
    "discovery": false, "discoveryPort": 6100, "usbipPort": 3240, "usbipAddress": "127.0.0.2", "jobDir": "jobs",
    "printers": [
      {"address": "127.0.0.1", "port": 65535, "usbId": "0999:bEaF", "drainRate": 0, "layerMs": 250,
       "resin": {"refusal": 2},
       "faults": [{"kind": "late", "code": 102, "count": -1, "skip": 3, "ms": 7},
                  {"kind": "bad-number", "field": "S", "text": "1,2"}]},
      {}]})");
  EXPECT_EQ(std::tuple(config.discovery, config.discoveryPort, config.usbipPort,
                       config.usbipAddress, config.jobFolder),
            std::tuple(false, 6100, 3240, "127.0.0.2", "jobs"));
  ASSERT_EQ(config.printers.size(), 2u);
  const PrinterConfig& printer = config.printers[0];
  EXPECT_EQ(std::tuple(printer.address, printer.port, printer.usbId, printer.drainRate,
                       printer.layerTime.count(), printer.resin.refusal),
            std::tuple("127.0.0.1", 65535, "0999:bEaF", 0u, 250, 2));
  EXPECT_EQ(config.printers[1].resin.refusal, std::nullopt);
  ASSERT_EQ(printer.faults.size(), 2u);
  const Fault& late = printer.faults[0];
  EXPECT_EQ(std::tuple(late.kind, late.code, late.count, late.skip, late.delay.count()),
            std::tuple(FaultKind::kLate, 102, -1, 3, 7));
  EXPECT_EQ(printer.faults[1].field + printer.faults[1].text, "S1,2");
}

TEST(ConfigTest, KeysOfThePrinterShowInItsAnswers) {
  Simulator sim(ParseConfig(R"({"discovery": false, "printers": [
      {"model": "BEGO VARSEO XS", "serial": "S1", "name": "N1", "firmware": "9.1",
       "controller": "9.2", "manufactured": "20250102", "address": "127.0.0.1",
       "resin": {"name": "R 1", "lot": "Q", "useBy": "20280304", "remainingMl": 5}},
      {"model": "of its own", "nickname": "K 1", "mac": "M1", "wirelessMac": "M2", "buffer": 1,
       "android": "9.3", "loader": "9.4", "panel": "9.5", "address": "127.0.0.1",
       "resin": {"state": 4, "remainingMl": 5, "code": "C", "tankMl": 6, "lot": "Q",
                 "useBy": "20280304", "type": "T", "tagRegistered": false},
       "openMode": false, "ledHours": 7, "sensors": {"C_B": -7, "C_LI": 0},
       "accessPoints": [{"name": "N\u00e4h <1>", "key": "\u00df =", "channel": 3, "signal": 9}],
       "earlierJobs": {"finished": 1, "cancelled": 2, "failed": 3}}]})"));
  sim.Start();
  RawClient dental(sim.TcpPort(0));
  EXPECT_EQ(dental.Ask("F354"), "F354 OK V:9.1 N:N1 M:BEGO VARSEO XS S:S1 C:9.2 D:20250102");
  EXPECT_EQ(dental.Ask("F356"), "F356 OK N:R 1 L:Q D:20280304 V:5");
  const std::pair<std::string, std::string> kAnswers[] = {
      {"F105", "OK S:4 R:5 C:C V:6 Q:Q"},
      {"F117", "OK S:1"},
      {"F120", "OK S4 R5 D20280304 TT"},
      {"F169 S0", "OK S6 F1 C2 E3"},
      {"F191 S1 C1 D1 SSID=<N\xc3\xa4h <1>> KEY=<\xc3\x9f =>", "OK"},
      {"F190", "OK S:1 C:3 M:1 R:9 SSID=<N\xc3\xa4h <1>>"},
      {"F192 S0",
       "OK IP=127.0.0.1 SUB=255.255.255.0 GATE=127.0.0.1 DNS1=127.0.0.1 DNS2=0.0.0.0 MAC=M1"},
      {"F197", "OK N:K 1"},
      {"F219", "NG"},
      {"F301",
       "OK C_T:28 C_B:-7 ZLT:0 ZLB:1 V_S:2 L_S:80 W_H:1 Y_H:1 C_LI:0 C_P:1 P_S:1 Y_F:0 T_T:30"},
      {"F310", "OK V:9.3 L:9.4"},
      {"F335", "OK S:0"},
      {"F504 A0", "OK V:9.5"},
      {"F708", "OK H:7"}};
  RawClient client(sim.TcpPort(1));
  for (const auto& [request, answer] : kAnswers) {
    EXPECT_EQ(client.Ask(request), request.substr(0, 4) + " " + answer);
  }
  EXPECT_THAT(client.Ask("F192 S1"), HasSubstr(" MAC=M2 "));
}

const struct {
  const char* json;
  const char* message;
} kBad[] = {
    {"{", "configuration: not valid JSON"},
    {"[]", "configuration: must be an object"},
    {"{}", "configuration.printers: must be a list"},
    {R"({"printers": []})", "printers: at least one"},
    {R"({"printers": [{}], "jobdir": ""})", "configuration.jobdir: unknown key"},
    {R"({"printers": [{"port": "1"}]})", "printers[0].port: must be a whole number from 0 to"},
    {R"({"printers": [{"port": 18446744073709551615}]})", "printers[0].port"},
    {R"({"printers": [{"buffer": 0}]})", "printers[0].buffer"},
    {R"({"printers": [{"model": 1}]})", "printers[0].model: must be a text"},
    {R"({"printers": [{"name": "a\nb"}]})", "printers[0].name: must not hold a line end"},
    {R"({"printers": [{"serial": "a b"}]})", "printers[0].serial: must not hold a blank"},
    {R"({"printers": [{"address": "127.0.0"}]})", "printers[0].address: must be an IPv4"},
    {R"({"printers": [{"usbId": "11F12601"}]})", "printers[0].usbId: must be vendor and product"},
    {R"({"printers": [{"manufactured": "2027011"}]})", "printers[0].manufactured: must be a date"},
    {R"({"printers": [{"sensors": {"C_LI": 2}}]})", "printers[0].sensors.C_LI: must be a whole"},
    {R"({"printers": [{"earlierJobs": {"failed": -1}}]})", "printers[0].earlierJobs.failed"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "signal": 101}]}]})", "[0].signal: must be"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "key": "k\r"}]}]})",
     "[0].key: must not hold"},
    {R"({"printers": [{"accessPoints": [{"name": "a"}, {"name": "a"}]}]})", "[1].name: is there"},
    {R"({"printers": [{"faults": [{}]}]})", "printers[0].faults[0].kind: unknown fault"},
    {R"({"printers": [{}], "discovery": 1})", "configuration.discovery: must be true or false"},
};

TEST(ConfigTest, WhatIsWrongIsRefusedWithThePlace) {
  for (const auto& row : kBad) {
    EXPECT_THAT([&row] { ParseConfig(row.json); },
                testing::ThrowsMessage<ConfigError>(HasSubstr(row.message)))
        << row.json;
  }
}

TEST(ConfigTest, UnreadableFileIsRefused) {
  EXPECT_THROW(LoadConfig(std::filesystem::path(testing::TempDir()) / "no-such-nuvsim-config"),
               ConfigError);
}

}  // namespace
}  // namespace NuvSim
