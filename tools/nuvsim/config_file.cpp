#include "nuvsim/config_file.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "nuvsim/fault_json.h"
#include "nuvsim/json_object.h"
#include "nuvsim/sensors.h"

namespace nuvsim {
namespace {

using nlohmann::json;

constexpr std::int64_t kMaxPort = 65535;
constexpr std::int64_t kMaxInt = 2147483647;
constexpr std::int64_t kMaxBytes = std::int64_t{1} << 50;
constexpr std::int64_t kMaxLayerMs = 3600000;

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

std::vector<Fault> ParseFaults(const json& value, const std::string& path) {
  if (!value.is_array()) throw ConfigError(path + ": must be a list");
  std::vector<Fault> faults;
  for (const json& each : value) {
    faults.push_back(ParseFault(each, path + "[" + std::to_string(faults.size()) + "]"));
  }
  return faults;
}

std::vector<AccessPoint> ParseAccessPoints(const json& value, const std::string& path) {
  if (!value.is_array()) throw ConfigError(path + ": must be a list");
  std::vector<AccessPoint> points;
  for (const json& each : value) {
    JsonObject object(each, path + "[" + std::to_string(points.size()) + "]");
    AccessPoint point;
    object.Read("name", point.name);
    object.Read("key", point.key);
    object.ReadInteger("channel", -kMaxInt, kMaxInt, point.channel);
    object.ReadInteger("signal", -kMaxInt, kMaxInt, point.signal);
    object.RefuseOthers();
    points.push_back(point);
  }
  return points;
}

std::map<std::string, int> ParseSensors(const json& value, const std::string& path) {
  JsonObject object(value, path);
  std::map<std::string, int> readings;
  for (const Sensor& each : kSensors) {
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
  std::int64_t layerMs = 0;
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
    printer.accessPoints = ParseAccessPoints(*points, object.PathOf("accessPoints"));
  }
  if (const json* jobs = object.Find("earlierJobs")) {
    printer.earlierJobs = ParseJobCounts(*jobs, object.PathOf("earlierJobs"));
  }
  if (const json* faults = object.Find("faults")) {
    printer.faults = ParseFaults(*faults, object.PathOf("faults"));
  }
  object.RefuseOthers();
  return printer;
}

}  // namespace

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

}  // namespace nuvsim
