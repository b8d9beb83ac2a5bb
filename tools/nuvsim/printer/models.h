// What the printer models have, as docs/protocol.md lists it.
#ifndef NUVSIM_PRINTER_MODELS_H_
#define NUVSIM_PRINTER_MODELS_H_

#include <string_view>

namespace NuvSim {

// The columns of the page's models table, in its order, and what no model lacks.
enum class Feature {
  kResin105,
  kResin120,
  kLaser,
  kLsu,
  kLed,
  kSensors,
  kWireless,
  kHistory,
  kAndroid,
  kDental,
  kAll
};

// A model by its name. One that the table does not know has everything but the dental commands.
class Model {
 public:
  explicit Model(std::string_view name);

  bool Has(Feature feature) const;
  // The scan unit draws three lines, so its flash has other values.
  bool HasThreeScanLines() const { return hasThreeScanLines_; }

 private:
  std::string_view features_;
  bool hasThreeScanLines_;
};

}  // namespace NuvSim

#endif  // NUVSIM_PRINTER_MODELS_H_
