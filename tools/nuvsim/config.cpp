#include "nuvsim/config.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>
#include <vector>

#include "nuvsim/addresses.h"
#include "nuvsim/json_object.h"

namespace NuvSim {
namespace {

using nlohmann::json;

constexpr int64_t kMaxPort = 65535;
constexpr int64_t kMaxInt = 2147483647;
constexpr int64_t kMaxBytes = int64_t{1} << 50;
constexpr int64_t kMaxLayerMs = 3600000;

ResinConfig ParseResin(const json& value, const std::string& path) {
  JsonObject object(value, path);
  ResinConfig resin;
  object.ReadInteger("state", -kMaxInt, kMaxInt, resin.state);
  object.ReadInteger("remainingMl", -kMaxInt, kMaxInt, resin.remainingMl);
  object.Read("code", resin.code);
  object.ReadInteger("tankMl", -kMaxInt, kMaxInt, resin.tankMl);
  object.Read("lot", resin.lot);
  object.Read("useBy", resin.useBy);
  object.Read("type", resin.type);
  object.Read("name", resin.name);
  object.Read("tagRegistered", resin.tagRegistered);
  if (object.Has("refusal")) {
    int state = 0;
    object.ReadInteger("refusal", -kMaxInt, kMaxInt, state);
    resin.refusal = state;
  }
  object.RefuseOthers();
  return resin;
}

AccessPoint ParseAccessPoint(JsonObject& object) {
  AccessPoint point;
  object.Read("name", point.name);
  object.Read("key", point.key);
  object.ReadInteger("channel", -kMaxInt, kMaxInt, point.channel);
  object.ReadInteger("signal", -kMaxInt, kMaxInt, point.signal);
  object.RefuseOthers();
  return point;
}

template <class Element>
std::vector<Element> ParseList(const json& value, const std::string& path,
                               Element (*parse)(JsonObject&)) {
  if (!value.is_array()) throw ConfigError(path + ": must be a list");
  std::vector<Element> elements;
  for (const json& each : value) {
    JsonObject object(each, path + "[" + std::to_string(elements.size()) + "]");
    elements.push_back(parse(object));
  }
  return elements;
}

std::map<std::string, int> ParseSensors(const json& value, const std::string& path) {
  JsonObject object(value, path);
  std::map<std::string, int> readings;
  for (const Sensor& each : kSensorTable) {
    if (object.Has(each.key)) object.ReadInteger(each.key, each.low, each.high, readings[each.key]);
  }
  object.RefuseOthers();
  return readings;
}

JobCounts ParseJobCounts(const json& value, const std::string& path) {
  JsonObject object(value, path);
  JobCounts counts;
  object.ReadInteger("finished", 0, kMaxInt, counts.finished);
  object.ReadInteger("cancelled", 0, kMaxInt, counts.cancelled);
  object.ReadInteger("failed", 0, kMaxInt, counts.failed);
  object.RefuseOthers();
  return counts;
}

void ParseIdentity(JsonObject& object, PrinterConfig& printer) {
  object.Read("model", printer.model);
  object.Read("serial", printer.serial);
  object.Read("name", printer.name);
  object.Read("nickname", printer.nickname);
  object.Read("mac", printer.mac);
  object.Read("wirelessMac", printer.wirelessMac);
  object.Read("firmware", printer.firmware);
  object.Read("controller", printer.controllerVersion);
  object.Read("android", printer.androidVersion);
  object.Read("loader", printer.loaderVersion);
  object.Read("panel", printer.panelVersion);
  object.Read("manufactured", printer.manufactured);
}

PrinterConfig ParsePrinter(const json& value, const std::string& path) {
  JsonObject object(value, path);
  PrinterConfig printer;
  ParseIdentity(object, printer);
  object.Read("address", printer.address);
  object.ReadInteger("port", 0, kMaxPort, printer.port);
  object.Read("usbId", printer.usbId);
  object.ReadInteger("buffer", 1, kMaxBytes, printer.bufferBytes);
  object.ReadInteger("drainRate", 0, kMaxBytes, printer.drainRate);
  int64_t layerMs = 0;
  object.ReadInteger("layerMs", 0, kMaxLayerMs, layerMs);
  printer.layerTime = std::chrono::milliseconds(layerMs);
  if (const json* resin = object.Find("resin")) {
    printer.resin = ParseResin(*resin, object.PathOf("resin"));
  }
  object.Read("openMode", printer.openMode);
  object.ReadInteger("ledHours", 0, kMaxInt, printer.ledHours);
  if (const json* sensors = object.Find("sensors")) {
    printer.sensors = ParseSensors(*sensors, object.PathOf("sensors"));
  }
  if (const json* points = object.Find("accessPoints")) {
    printer.accessPoints = ParseList(*points, object.PathOf("accessPoints"), ParseAccessPoint);
  }
  if (const json* jobs = object.Find("earlierJobs")) {
    printer.earlierJobs = ParseJobCounts(*jobs, object.PathOf("earlierJobs"));
  }
  if (const json* faults = object.Find("faults")) {
    printer.faults = ParseList(*faults, object.PathOf("faults"), ParseFault);
  }
  object.RefuseOthers();
  return printer;
}

constexpr int kMaxChannel = 196;
constexpr int kMaxPercent = 100;

void RefuseUnless(bool holds, const std::string& path, const std::string& need) {
  if (!holds) throw ConfigError(path + ": " + need);
}

// A text that goes into a reply line; `blanks` where the host reads on to the end of the line.
void ValidateText(const std::string& text, const std::string& path, bool blanks) {
  RefuseUnless(text.find_first_of(blanks ? "\r\n" : "\r\n ") == std::string::npos, path,
               blanks ? "must not hold a line end" : "must not hold a blank or a line end");
}

void ValidateDate(const std::string& text, const std::string& path) {
  const bool isDate = text.size() == 8 && text.find_first_not_of("0123456789") == std::string::npos;
  RefuseUnless(isDate, path, "must be a date such as 20270131");
}

void ValidateTexts(const PrinterConfig& printer, const std::string& path) {
  ValidateText(printer.model, path + ".model", true);
  ValidateText(printer.name, path + ".name", true);
  ValidateText(printer.nickname, path + ".nickname", true);
  ValidateText(printer.serial, path + ".serial", false);
  ValidateText(printer.mac, path + ".mac", false);
  ValidateText(printer.wirelessMac, path + ".wirelessMac", false);
  ValidateText(printer.firmware, path + ".firmware", false);
  ValidateText(printer.controllerVersion, path + ".controller", false);
  ValidateText(printer.androidVersion, path + ".android", false);
  ValidateText(printer.loaderVersion, path + ".loader", false);
  ValidateText(printer.panelVersion, path + ".panel", false);
  ValidateDate(printer.manufactured, path + ".manufactured");
  ValidateText(printer.resin.code, path + ".resin.code", false);
  ValidateText(printer.resin.lot, path + ".resin.lot", false);
  ValidateDate(printer.resin.useBy, path + ".resin.useBy");
  ValidateText(printer.resin.type, path + ".resin.type", false);
  ValidateText(printer.resin.name, path + ".resin.name", true);
}

void ValidateAccessPoints(const std::vector<AccessPoint>& points, const std::string& path) {
  std::set<std::string> names;
  for (size_t i = 0; i < points.size(); ++i) {
    const AccessPoint& point = points[i];
    const std::string place = path + "[" + std::to_string(i) + "]";
    RefuseUnless(!point.name.empty(), place + ".name", "must not be empty");
    RefuseUnless(names.insert(point.name).second, place + ".name", "is there already");
    ValidateText(point.name, place + ".name", true);
    ValidateText(point.key, place + ".key", true);
    RefuseUnless(point.channel >= 1 && point.channel <= kMaxChannel, place + ".channel",
                 "must be from 1 to 196");
    RefuseUnless(point.signal >= 0 && point.signal <= kMaxPercent, place + ".signal",
                 "must be from 0 to 100");
  }
}

void ValidateSensor(const std::string& key, int reading, const std::string& path) {
  const auto sensor = std::find_if(kSensorTable.begin(), kSensorTable.end(),
                                   [&key](const Sensor& each) { return key == each.key; });
  RefuseUnless(sensor != kSensorTable.end(), path, "unknown key");
  RefuseUnless(reading >= sensor->low && reading <= sensor->high, path, "is out of range");
}

void ValidatePrinter(const PrinterConfig& printer, const std::string& path) {
  ValidateTexts(printer, path);
  ValidateAccessPoints(printer.accessPoints, path + ".accessPoints");
  const std::string sensors = path + ".sensors.";
  for (const auto& [key, reading] : printer.sensors) ValidateSensor(key, reading, sensors + key);
  const JobCounts& jobs = printer.earlierJobs;
  RefuseUnless(jobs.finished >= 0 && jobs.cancelled >= 0 && jobs.failed >= 0, path + ".earlierJobs",
               "must not be negative");
  RefuseUnless(printer.address.empty() || ParseIpv4(printer.address), path + ".address",
               "must be an IPv4 address such as 127.0.0.1");
  RefuseUnless(ParseUsbId(printer.usbId).has_value(), path + ".usbId",
               "must be vendor and product such as 11F1:2601");
  RefuseUnless(printer.bufferBytes > 0, path + ".buffer", "must be at least 1");
  RefuseUnless(printer.layerTime.count() >= 0, path + ".layerMs", "must not be negative");
}

}  // namespace

PrinterConfig LoopbackPrinter() {
  PrinterConfig config;
  config.address = "127.0.0.1";
  return config;
}

SimulatorConfig ParseConfig(const std::string& text) {
  const json document = ParseJson(text, "configuration");
  JsonObject object(document, "configuration");
  SimulatorConfig config;
  config.discovery = true;
  object.Read("discovery", config.discovery);
  object.ReadInteger("discoveryPort", 1, kMaxPort, config.discoveryPort);
  if (object.Has("usbipPort")) {
    object.ReadInteger("usbipPort", 0, kMaxPort, config.usbipPort.emplace());
  }
  object.Read("usbipAddress", config.usbipAddress);
  std::string folder;
  object.Read("jobDir", folder);
  config.jobFolder = folder;
  const json* printers = object.Find("printers");
  if (printers == nullptr || !printers->is_array()) {
    throw ConfigError("configuration.printers: must be a list of printers");
  }
  for (const json& each : *printers) {
    config.printers.push_back(
        ParsePrinter(each, "printers[" + std::to_string(config.printers.size()) + "]"));
  }
  object.RefuseOthers();
  ValidateConfig(config);
  return config;
}

SimulatorConfig LoadConfig(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream) throw ConfigError(file.string() + ": cannot be read");
  try {
    return ParseConfig(text);
  } catch (const ConfigError& error) {
    throw ConfigError(file.string() + ": " + error.what());
  }
}

void ValidateConfig(const SimulatorConfig& config) {
  RefuseUnless(!config.printers.empty(), "printers", "at least one printer is needed");
  RefuseUnless(!config.discovery || config.discoveryPort != 0, "discoveryPort", "must not be 0");
  RefuseUnless(ParseIpv4(config.usbipAddress).has_value(), "usbipAddress",
               "must be an IPv4 address such as 127.0.0.1");
  for (size_t i = 0; i < config.printers.size(); ++i) {
    ValidatePrinter(config.printers[i], "printers[" + std::to_string(i) + "]");
  }
}

}  // namespace NuvSim
