// The check that a configuration can be used, however it was made.

#include <algorithm>
#include <set>

#include "nuvsim/config_file.h"
#include "nuvsim/ipv4.h"
#include "nuvsim/sensors.h"
#include "nuvsim/usb_id.h"

namespace nuvsim {
namespace {

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
  for (std::size_t i = 0; i < points.size(); ++i) {
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
  const auto sensor = std::find_if(kSensors.begin(), kSensors.end(),
                                   [&key](const Sensor& each) { return key == each.key; });
  RefuseUnless(sensor != kSensors.end(), path, "unknown key");
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

void ValidateConfig(const SimulatorConfig& config) {
  RefuseUnless(!config.printers.empty(), "printers", "at least one printer is needed");
  RefuseUnless(!config.discovery || config.discoveryPort != 0, "discoveryPort", "must not be 0");
  RefuseUnless(ParseIpv4(config.usbipAddress).has_value(), "usbipAddress",
               "must be an IPv4 address such as 127.0.0.1");
  for (std::size_t i = 0; i < config.printers.size(); ++i) {
    ValidatePrinter(config.printers[i], "printers[" + std::to_string(i) + "]");
  }
}

}  // namespace nuvsim
