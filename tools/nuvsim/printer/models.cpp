#include "nuvsim/printer/models.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace NuvSim {
namespace {

constexpr std::string_view kThreeScanLines = "Fabrix150 xP";
constexpr auto kFeatures = static_cast<size_t>(Feature::kAll);

// A character per feature: x where the model has it.
struct ModelRow {
  char features[kFeatures + 1];
  std::string_view name;
};

constexpr ModelRow kModels[] = {
    {".xx.......", "Zafel 1.0"},        {".xx...x...", "Zafel 1.0A"},
    {"x.x...xx..", "Zafel Superfine"},  {"x.xx..xx..", "Zafel Superfine EngVer"},
    {"x.xx..xx..", "Zafel 10A EngVer"}, {"x.x..xxx..", "Fabrix100 xP"},
    {"x.xx.xxxx.", "Fabrix120 xP"},     {"x.xx.xxxx.", kThreeScanLines},
    {"x...xxxxx.", "Mekrix3400 xP"},    {"x...xxxx..", "Moldrix100 xP"},
    {"....x.x..x", "BEGO VARSEO XS"},
};
constexpr std::string_view kUnknownModel = "xxxxxxxxx.";
static_assert(kUnknownModel.size() == kFeatures);

std::string_view FeaturesOf(std::string_view name) {
  const auto* row = std::find_if(std::begin(kModels), std::end(kModels),
                                 [name](const ModelRow& each) { return each.name == name; });
  return row == std::end(kModels) ? kUnknownModel : row->features;
}

}  // namespace

Model::Model(std::string_view name)
    : features_(FeaturesOf(name)), hasThreeScanLines_(name == kThreeScanLines) {}

bool Model::Has(Feature feature) const {
  return feature == Feature::kAll || features_[static_cast<size_t>(feature)] == 'x';
}

}  // namespace NuvSim
