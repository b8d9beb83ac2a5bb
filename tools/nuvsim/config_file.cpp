#include "nuvsim/config_file.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "nuvsim/fault_json.h"
#include "nuvsim/ipv4.h"
#include "nuvsim/json_object.h"

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

PrinterConfig ParsePrinter(const json& value, const std::string& path) {
  JsonObject object(value, path);
  PrinterConfig printer;
  object.Read("model", printer.model);
  object.Read("serial", printer.serial);
  object.Read("name", printer.name);
  object.Read("nickname", printer.nickname);
  object.Read("mac", printer.mac);
  object.Read("firmware", printer.firmware);
  object.Read("controller", printer.controllerVersion);
  object.Read("address", printer.address);
  object.ReadInteger("port", 0, kMaxPort, printer.port);
  object.ReadInteger("buffer", 1, kMaxBytes, printer.bufferBytes);
  object.ReadInteger("drainRate", 0, kMaxBytes, printer.drainRate);
  std::int64_t layerMs = 0;
  object.ReadInteger("layerMs", 0, kMaxLayerMs, layerMs);
  printer.layerTime = std::chrono::milliseconds(layerMs);
  if (const json* resin = object.Find("resin")) {
    printer.resin = ParseResin(*resin, object.PathOf("resin"));
  }
  if (const json* faults = object.Find("faults")) {
    printer.faults = ParseFaults(*faults, object.PathOf("faults"));
  }
  object.RefuseOthers();
  return printer;
}

void RefuseUnless(bool holds, const std::string& path, const std::string& need) {
  if (!holds) throw ConfigError(path + ": " + need);
}

// A text that goes into a reply line; `blanks` where the host reads on to the end of the line.
void ValidateText(const std::string& text, const std::string& path, bool blanks) {
  RefuseUnless(text.find_first_of(blanks ? "\r\n" : "\r\n ") == std::string::npos, path,
               blanks ? "must not hold a line end" : "must not hold a blank or a line end");
}

void ValidatePrinter(const PrinterConfig& printer, const std::string& path) {
  ValidateText(printer.model, path + ".model", true);
  ValidateText(printer.name, path + ".name", true);
  ValidateText(printer.nickname, path + ".nickname", true);
  ValidateText(printer.serial, path + ".serial", false);
  ValidateText(printer.mac, path + ".mac", false);
  ValidateText(printer.firmware, path + ".firmware", false);
  ValidateText(printer.controllerVersion, path + ".controller", false);
  ValidateText(printer.resin.code, path + ".resin.code", false);
  ValidateText(printer.resin.lot, path + ".resin.lot", false);
  RefuseUnless(printer.address.empty() || ParseIpv4(printer.address), path + ".address",
               "must be an IPv4 address such as 127.0.0.1");
  RefuseUnless(printer.bufferBytes > 0, path + ".buffer", "must be at least 1");
  RefuseUnless(printer.layerTime.count() >= 0, path + ".layerMs", "must not be negative");
}

}  // namespace

SimulatorConfig ParseConfig(const std::string& text) {
  const json document = ParseJson(text, "configuration");
  JsonObject object(document, "configuration");
  SimulatorConfig config;
  config.discovery = true;
  object.Read("discovery", config.discovery);
  object.ReadInteger("discoveryPort", 1, kMaxPort, config.discoveryPort);
  std::string folder;
  object.Read("jobDir", folder);
  config.jobFolder = folder;
  const json* printers = object.Find("printers");
  RefuseUnless(printers != nullptr && printers->is_array(), "configuration.printers",
               "must be a list of printers");
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
  RefuseUnless(static_cast<bool>(stream), file.string(), "cannot be read");
  try {
    return ParseConfig(text);
  } catch (const ConfigError& error) {
    throw ConfigError(file.string() + ": " + error.what());
  }
}

void ValidateConfig(const SimulatorConfig& config) {
  RefuseUnless(!config.printers.empty(), "printers", "at least one printer is needed");
  RefuseUnless(!config.discovery || config.discoveryPort != 0, "discoveryPort", "must not be 0");
  for (std::size_t i = 0; i < config.printers.size(); ++i) {
    ValidatePrinter(config.printers[i], "printers[" + std::to_string(i) + "]");
  }
}

}  // namespace nuvsim
