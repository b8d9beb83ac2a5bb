#include "job/job_arguments.h"

#include <locale>
#include <map>
#include <sstream>

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
template <class Number>
void Read(const Arguments& arguments, const char* name, Number& number) {
  const auto found = arguments.find(name);
  if (found == arguments.end()) return;
  std::istringstream text(found->second);
  text.imbue(std::locale::classic());
  if (!(text >> number)) number = 0;
}

}  // namespace

JobOpening ReadJobArguments(const std::string& arguments) {
  const Arguments values = Split(arguments);
  JobOpening job;
  Read(values, "layers", job.layers);
  Read(values, "layer_thickness_mm", job.layerThicknessMm);
  Read(values, "print_minutes", job.printMinutes);
  Read(values, "resin_ml", job.resinMl);
  Read(values, "exposure_s", job.exposureS);
  Read(values, "bottom_exposure_s", job.bottomExposureS);
  Read(values, "lift_mm", job.liftMm);
  Read(values, "lift_mm_s", job.liftMmPerS);
  Read(values, "retract_mm_s", job.retractMmPerS);
  Read(values, "laser_power_percent", job.laserPowerPercent);
  return job;
}

JobOpening OpeningOf(IPrintFileLibrary& printFiles) {
  JobOpening job = ReadJobArguments(printFiles.GetFileArguments());
  job.dataBytes = printFiles.GetModelDataSize();
  return job;
}

}  // namespace Nuv::Connect
