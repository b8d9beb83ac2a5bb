#include "nuvsim/commands/table.h"

#include <algorithm>

namespace NuvSim {
namespace {

const CommandRow* Find(int code) {
  for (const CommandTable* table :
       {&IdentityCommands(), &ResinCommands(), &SettingsCommands(), &NetworkCommands(),
        &HistoryCommands(), &LightEngineCommands(), &JobCommands(), &FirmwareCommands()}) {
    const auto row = std::find_if(table->begin(), table->end(),
                                  [code](const CommandRow& each) { return each.code == code; });
    if (row != table->end()) return &*row;
  }
  return nullptr;
}

}  // namespace

std::string StateField(Machine& machine) {
  return "S:" + std::to_string(static_cast<int>(machine.CurrentState()));
}

std::string Answer(Machine& machine, const Request& request) {
  const std::string head(request.head);
  const CommandRow* row = Find(request.code);
  if (row == nullptr || !machine.GetModel().Has(row->needs)) return head + " NG";
  return head + " " + row->answer(machine, request);
}

}  // namespace NuvSim
