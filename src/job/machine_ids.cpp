#include "job/machine_ids.h"

namespace Nuv::Connect {
namespace {

struct Row {
  const char* name;
  PrinterFamily family;
};

constexpr Row kMachines[] = {
    {"3DPSNKG23WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKG13WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKG33WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKG53WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKG73WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKG83WTW00001", PrinterFamily::kZafelSuperfine},
    {"3DPSNKGB3WTW00001", PrinterFamily::kBego},
    {"3DPSNKG43WTW00001", PrinterFamily::kAndroid},
    {"3DPSNKG93WTW00001", PrinterFamily::kAndroid},
    {"3DPSNKGC3WTW00001", PrinterFamily::kAndroid},
};

constexpr Row kModels[] = {
    {"Zafel Superfine", PrinterFamily::kZafelSuperfine}, {"BEGO VARSEO XS", PrinterFamily::kBego},
    {"Fabrix120 xP", PrinterFamily::kAndroid},           {"Fabrix150 xP", PrinterFamily::kAndroid},
    {"Mekrix3400 xP", PrinterFamily::kAndroid},
};

template <class Rows>
PrinterFamily Find(const Rows& rows, const std::string& name) {
  for (const Row& row : rows) {
    if (name == row.name) return row.family;
  }
  return PrinterFamily::kUnknown;
}

}  // namespace

const char kZafelSuperfineMachineId[] = "3DPSNKG33WTW00001";
const char kBegoMachineId[] = "3DPSNKGB3WTW00001";
const char kAndroidMachineId[] = "3DPSNKG43WTW00001";

PrinterFamily FamilyOf(const std::string& machineId) { return Find(kMachines, machineId); }

PrinterFamily FamilyOfModel(const std::string& model) { return Find(kModels, model); }

const char* NameOf(PrinterFamily family) {
  switch (family) {
    case PrinterFamily::kZafelSuperfine:
      return "Zafel Superfine";
    case PrinterFamily::kBego:
      return "BEGO";
    case PrinterFamily::kAndroid:
      return "Android";
    case PrinterFamily::kUnknown:
      break;
  }
  return "";
}

}  // namespace Nuv::Connect
