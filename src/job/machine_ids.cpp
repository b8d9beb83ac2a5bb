#include "job/machine_ids.h"

namespace Nuv::Connect {
namespace {

struct MachineRow {
  const char* id;
  PrinterFamily family;
};

constexpr MachineRow kMachines[] = {
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

}  // namespace

const char kZafelSuperfineMachineId[] = "3DPSNKG33WTW00001";
const char kBegoMachineId[] = "3DPSNKGB3WTW00001";

PrinterFamily FamilyOf(const std::string& machineId) {
  for (const MachineRow& row : kMachines) {
    if (machineId == row.id) return row.family;
  }
  return PrinterFamily::kUnknown;
}

}  // namespace Nuv::Connect
