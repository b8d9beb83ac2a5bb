// The configuration file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>

#include "nuvsim/config_file.h"

namespace nuvsim {
namespace {

using testing::HasSubstr;

TEST(ConfigTest, EveryKeyReachesItsPlace) {
  const SimulatorConfig config = ParseConfig(R"({
    "discovery": false, "discoveryPort": 6100, "usbipPort": 3240, "usbipAddress": "127.0.0.2", "jobDir": "jobs",
    "printers": [
      {"model": "BEGO VARSEO XS", "serial": "S1", "name": "N1", "nickname": "K 1", "mac": "M1",
       "firmware": "9.1", "controller": "9.2", "android": "9.3", "loader": "9.4", "panel": "9.5",
       "manufactured": "20250102", "wirelessMac": "M2", "address": "127.0.0.1", "port": 65535,
       "usbId": "0999:bEaF",
       "buffer": 1, "drainRate": 0, "layerMs": 250,
       "resin": {"state": 4, "remainingMl": 5, "code": "C", "tankMl": 6, "lot": "Q",
                 "useBy": "20280304", "type": "T", "name": "R 1", "tagRegistered": false,
                 "refusal": 2},
       "openMode": false, "ledHours": 7, "sensors": {"C_T": -5, "C_LI": 0},
       "accessPoints": [{"name": "N\u00e4h <1>", "key": "\u00df =", "channel": 3, "signal": 9}],
       "earlierJobs": {"finished": 1, "cancelled": 2, "failed": 3},
       "faults": [{"kind": "late", "code": 102, "count": -1, "skip": 3, "ms": 7},
                  {"kind": "bad-number", "field": "S", "text": "1,2"}]},
      {}]})");
  EXPECT_FALSE(config.discovery);
  EXPECT_EQ(config.discoveryPort, 6100);
  EXPECT_EQ(config.usbipPort, 3240);
  EXPECT_EQ(config.usbipAddress, "127.0.0.2");
  EXPECT_EQ(config.jobFolder, "jobs");
  ASSERT_EQ(config.printers.size(), 2u);
  const PrinterConfig& printer = config.printers[0];
  EXPECT_EQ(printer.model + "," + printer.serial + "," + printer.name + "," + printer.nickname +
                "," + printer.mac + "," + printer.firmware + "," + printer.controllerVersion + "," +
                printer.address,
            "BEGO VARSEO XS,S1,N1,K 1,M1,9.1,9.2,127.0.0.1");
  EXPECT_EQ(printer.port, 65535);
  EXPECT_EQ(printer.usbId, "0999:bEaF");
  EXPECT_EQ(printer.bufferBytes, 1u);
  EXPECT_EQ(printer.drainRate, 0u);
  EXPECT_EQ(printer.layerTime.count(), 250);
  EXPECT_EQ(printer.resin.state, 4);
  EXPECT_EQ(printer.resin.remainingMl, 5);
  EXPECT_EQ(printer.resin.tankMl, 6);
  EXPECT_EQ(printer.resin.code + printer.resin.lot, "CQ");
  EXPECT_EQ(printer.resin.refusal, 2);
  EXPECT_EQ(printer.androidVersion + "," + printer.loaderVersion + "," + printer.panelVersion +
                "," + printer.manufactured + "," + printer.wirelessMac + "," + printer.resin.useBy +
                "," + printer.resin.type + "," + printer.resin.name,
            "9.3,9.4,9.5,20250102,M2,20280304,T,R 1");
  EXPECT_FALSE(printer.resin.tagRegistered);
  EXPECT_FALSE(printer.openMode);
  EXPECT_EQ(printer.ledHours, 7);
  EXPECT_EQ(printer.sensors, (std::map<std::string, int>{{"C_LI", 0}, {"C_T", -5}}));
  ASSERT_EQ(printer.accessPoints.size(), 1u);
  const AccessPoint& point = printer.accessPoints[0];
  EXPECT_EQ(point.name + point.key, "N\xc3\xa4h <1>\xc3\x9f =");
  EXPECT_EQ(point.channel, 3);
  EXPECT_EQ(point.signal, 9);
  const JobCounts& jobs = printer.earlierJobs;
  EXPECT_EQ((std::array{jobs.finished, jobs.cancelled, jobs.failed}), (std::array{1, 2, 3}));
  ASSERT_EQ(printer.faults.size(), 2u);
  const Fault& late = printer.faults[0];
  EXPECT_EQ(late.kind, FaultKind::kLate);
  EXPECT_EQ(late.code, 102);
  EXPECT_EQ(late.count, -1);
  EXPECT_EQ(late.skip, 3);
  EXPECT_EQ(late.delay.count(), 7);
  EXPECT_EQ(printer.faults[1].field + printer.faults[1].text, "S1,2");
  EXPECT_EQ(config.printers[1].resin.refusal, std::nullopt);
}

struct BadRow {
  const char* json;
  const char* message;
};

class BadConfigTest : public testing::TestWithParam<BadRow> {};

TEST_P(BadConfigTest, IsRefusedWithThePlace) {
  try {
    ParseConfig(GetParam().json);
    FAIL() << "accepted";
  } catch (const ConfigError& error) {
    EXPECT_THAT(error.what(), HasSubstr(GetParam().message));
  }
}

const BadRow kBad[] = {
    {"{", "configuration: not valid JSON"},
    {"[]", "configuration: must be an object"},
    {"{}", "configuration.printers: must be a list"},
    {R"({"printers": {}})", "configuration.printers: must be a list"},
    {R"({"printers": []})", "printers: at least one"},
    {R"({"printers": [1]})", "printers[0]: must be an object"},
    {R"({"printers": [{}], "jobdir": ""})", "configuration.jobdir: unknown key"},
    {R"({"printers": [{}, {"Port": 1}]})", "printers[1].Port: unknown key"},
    {R"({"printers": [{"port": "1"}]})", "printers[0].port: must be a whole number from 0 to"},
    {R"({"printers": [{"port": 1.5}]})", "printers[0].port"},
    {R"({"printers": [{"port": 65536}]})", "printers[0].port"},
    {R"({"printers": [{"port": 18446744073709551615}]})", "printers[0].port"},
    {R"({"printers": [{"buffer": 0}]})", "printers[0].buffer"},
    {R"({"printers": [{"model": 1}]})", "printers[0].model: must be a text"},
    {R"({"printers": [{"name": "a\nb"}]})", "printers[0].name: must not hold a line end"},
    {R"({"printers": [{"serial": "a b"}]})", "printers[0].serial: must not hold a blank"},
    {R"({"printers": [{"address": "127.0.0"}]})", "printers[0].address: must be an IPv4"},
    {R"({"printers": [{"address": "127.0.0.1.2"}]})", "printers[0].address"},
    {R"({"printers": [{"address": "127.0.0.256"}]})", "printers[0].address"},
    {R"({"printers": [{"usbId": "11F12601"}]})", "printers[0].usbId: must be vendor and product"},
    {R"({"printers": [{"usbId": "11F1:26G1"}]})", "printers[0].usbId"},
    {R"({"printers": [{"usbId": "11F1:-601"}]})", "printers[0].usbId"},
    {R"({"printers": [{}], "usbipPort": 65536})", "configuration.usbipPort"},
    {R"({"printers": [{}], "usbipAddress": "localhost"})", "usbipAddress: must be an IPv4"},
    {R"({"printers": [{"resin": {"lot": null}}]})", "printers[0].resin.lot: must be a text"},
    {R"({"printers": [{"resin": {"name": "a\nb"}}]})", "printers[0].resin.name: must not hold"},
    {R"({"printers": [{"resin": {"useBy": "2027-1-1"}}]})", "printers[0].resin.useBy: must be a"},
    {R"({"printers": [{"manufactured": "2027011"}]})", "printers[0].manufactured: must be a date"},
    {R"({"printers": [{"panel": "1 2"}]})", "printers[0].panel: must not hold a blank"},
    {R"({"printers": [{"ledHours": -1}]})", "printers[0].ledHours: must be a whole number"},
    {R"({"printers": [{"openMode": 1}]})", "printers[0].openMode: must be true or false"},
    {R"({"printers": [{"sensors": {"C_X": 1}}]})", "printers[0].sensors.C_X: unknown key"},
    {R"({"printers": [{"sensors": {"C_LI": 2}}]})", "printers[0].sensors.C_LI: must be a whole"},
    {R"({"printers": [{"earlierJobs": {"failed": -1}}]})", "printers[0].earlierJobs.failed"},
    {R"({"printers": [{"accessPoints": {}}]})", "printers[0].accessPoints: must be a list"},
    {R"({"printers": [{"accessPoints": [{"key": "k"}]}]})", "accessPoints[0].name: must not be"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "ssid": "b"}]}]})", "ssid: unknown key"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "signal": 101}]}]})", "[0].signal: must be"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "channel": 0}]}]})", "[0].channel: must be"},
    {R"({"printers": [{"accessPoints": [{"name": "a", "key": "k\r"}]}]})",
     "[0].key: must not hold"},
    {R"({"printers": [{"accessPoints": [{"name": "a"}, {"name": "a"}]}]})", "[1].name: is there"},
    {R"({"printers": [{"faults": [{}]}]})", "printers[0].faults[0].kind: unknown fault"},
    {R"({"printers": [{"faults": [{"kind": "late", "n": 1}]}]})", "faults[0].n: unknown key"},
    {R"({"printers": [{}], "discovery": 1})", "configuration.discovery: must be true or false"},
    {R"({"printers": [{}], "discoveryPort": 0})", "configuration.discoveryPort"},
};

INSTANTIATE_TEST_SUITE_P(Each, BadConfigTest, testing::ValuesIn(kBad));

// A program fills the maps of a configuration without the reader of the file.
TEST(ConfigTest, SensorsOfAProgramAreCheckedToo) {
  for (const auto& [key, reading] : std::map<std::string, int>{{"C_X", 1}, {"ZLT", 2}}) {
    SimulatorConfig config;
    config.printers = {LoopbackPrinter()};
    config.printers[0].sensors[key] = reading;
    EXPECT_THROW(ValidateConfig(config), ConfigError) << key;
  }
}

TEST(ConfigTest, UnreadableFileIsRefused) {
  EXPECT_THROW(LoadConfig(std::filesystem::path(testing::TempDir()) / "no-such-nuvsim-config"),
               ConfigError);
}

}  // namespace
}  // namespace nuvsim
