#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cmath>

#include "field_report.h"
#include "setting.h"

namespace nuvctl {
namespace {

constexpr size_t kFactors = 6;
constexpr const char* kLabels[kFactors] = {"X1", "X2", "Y1", "Y2", "Z1", "Z2"};
constexpr const char* kKeys[kFactors] = {"x1", "x2", "y1", "y2", "z1", "z2"};
using Scaling = std::array<float, kFactors>;

int WriteScaling(const Scaling& f) { return API_SetBCPScaling(f[0], f[1], f[2], f[3], f[4], f[5]); }

int ReadScaling(Scaling& f) { return API_GetBCPScaling(&f[0], &f[1], &f[2], &f[3], &f[4], &f[5]); }

// Printers keep six decimals, and a float near the largest factor has no more than that.
bool SameScaling(const Scaling& wanted, const Scaling& actual) {
  constexpr float kTolerance = 2e-6F;
  return std::equal(wanted.begin(), wanted.end(), actual.begin(),
                    [](float a, float b) { return std::fabs(a - b) <= kTolerance; });
}

Report ShowScaling(const Scaling& scaling) {
  constexpr double kDecimals = 1e6;
  FieldReport report;
  for (size_t i = 0; i < kFactors; ++i) {
    // Rounded, so that the float nearest to 1.1 shows as 1.1.
    const nlohmann::ordered_json factor =
        std::round(static_cast<double>(scaling[i]) * kDecimals) / kDecimals;
    report.Add(kLabels[i], factor.dump(), std::string("scaling/") + kKeys[i], factor);
  }
  return report.Finish();
}

constexpr Setting<Scaling> kScaling = {"the scaling", "Each factor must be above 0 and at most 10.",
                                       WriteScaling,  ReadScaling,
                                       SameScaling,   ShowScaling};

// Empty when nothing was given.
std::optional<Scaling> ScalingOf(const std::vector<float>& factors) {
  if (factors.empty()) return std::nullopt;
  if (!std::all_of(factors.begin(), factors.end(), [](float f) { return std::isfinite(f); })) {
    throw CommandError("usage", kUsage, "A scaling factor is not a number",
                       "Give six numbers, such as 1.002 1.002 1 1 1 1.");
  }
  Scaling scaling{};
  std::copy_n(factors.begin(), kFactors, scaling.begin());
  return scaling;
}

}  // namespace

Action DeclareScaling(CLI::App& app) {
  const auto factors = std::make_shared<std::vector<float>>();
  // CLI11 takes no name with blanks in it.
  app.add_option("FACTORS", *factors, "The six new factors; without them the factors are shown")
      ->expected(static_cast<int>(kFactors))
      ->option_text("X1 X2 Y1 Y2 Z1 Z2");
  return [factors](Context& context) {
    const std::optional<Scaling> wanted = ScalingOf(*factors);
    OpenPrinter(context);
    return ShowOrSet(kScaling, wanted);
  };
}

}  // namespace nuvctl
