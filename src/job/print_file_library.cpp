#include "job/print_file_library.h"

#include <charconv>
#include <limits>
#include <locale>
#include <map>
#include <sstream>

#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

using Arguments = std::map<std::string, std::string>;

Arguments Split(const std::string& text) {
  Arguments arguments;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const size_t equals = line.find('=');
    if (equals != std::string::npos) arguments[line.substr(0, equals)] = line.substr(equals + 1);
  }
  return arguments;
}

// Read in the classic locale: a print file is the same file wherever it is opened.
void Read(const Arguments& arguments, const char* name, double& number) {
  const auto found = arguments.find(name);
  if (found == arguments.end()) return;
  std::istringstream text(found->second);
  text.imbue(std::locale::classic());
  if (!(text >> number)) number = 0;
}

bool ReadWhole(const Arguments& arguments, const char* name, int& number) {
  const auto found = arguments.find(name);
  if (found == arguments.end()) return true;
  const std::string& text = found->second;
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() ||
      value > uint32_t{std::numeric_limits<int>::max()}) {
    Platform::Diagnostic("print file: argument %s is \"%s\", not a whole number up to 2147483647",
                         name, text.c_str());
    return false;
  }
  number = static_cast<int>(value);
  return true;
}

}  // namespace

std::optional<JobOpening> OpeningOf(IPrintFileLibrary& printFiles) {
  const Arguments values = Split(printFiles.GetFileArguments());
  JobOpening job;
  if (!ReadWhole(values, "layers", job.layers) ||
      !ReadWhole(values, "print_minutes", job.printMinutes)) {
    return std::nullopt;
  }
  Read(values, "layer_thickness_mm", job.layerThicknessMm);
  Read(values, "resin_ml", job.resinMl);
  Read(values, "exposure_s", job.exposureS);
  Read(values, "bottom_exposure_s", job.bottomExposureS);
  Read(values, "lift_mm", job.liftMm);
  Read(values, "lift_mm_s", job.liftMmPerS);
  Read(values, "retract_mm_s", job.retractMmPerS);
  Read(values, "laser_power_percent", job.laserPowerPercent);
  job.dataBytes = printFiles.GetModelDataSize();
  return job;
}

}  // namespace Nuv::Connect
