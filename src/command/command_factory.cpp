#include "command/command_factory.h"

#include <algorithm>
#include <iterator>

#include "command/catalogue.h"
#include "command/commands.h"

namespace Nuv::Command {
namespace {

using MakeFunction = std::unique_ptr<CommandBase> (*)(Connect::IChannel&, CommandArguments);

template <class Class>
std::unique_ptr<CommandBase> Make(Connect::IChannel& channel, CommandArguments arguments) {
  return MakeCommand<Class>(channel, std::move(arguments));
}

struct FactoryRow {
  int32_t code;
  MakeFunction make;
};

template <class Class>
constexpr FactoryRow Row() {
  return {Class::kCode, Make<Class>};
}

// In code order. The classes that the catalogue marks as made directly are not here.
constexpr FactoryRow kFactory[] = {
    Row<F101Cmd>(), Row<F102Cmd>(), Row<F103Cmd>(), Row<F104Cmd>(), Row<F105Cmd>(), Row<F106Cmd>(),
    Row<F107Cmd>(), Row<F108Cmd>(), Row<F109Cmd>(), Row<F110Cmd>(), Row<F111Cmd>(), Row<F112Cmd>(),
    Row<F117Cmd>(), Row<F120Cmd>(), Row<F121Cmd>(), Row<F122Cmd>(), Row<F155Cmd>(), Row<F156Cmd>(),
    Row<F157Cmd>(), Row<F159Cmd>(), Row<F160Cmd>(), Row<F166Cmd>(), Row<F169Cmd>(), Row<F170Cmd>(),
    Row<F171Cmd>(), Row<F174Cmd>(), Row<F175Cmd>(), Row<F176Cmd>(), Row<F177Cmd>(), Row<F186Cmd>(),
    Row<F188Cmd>(), Row<F189Cmd>(), Row<F190Cmd>(), Row<F191Cmd>(), Row<F192Cmd>(), Row<F194Cmd>(),
    Row<F196Cmd>(), Row<F197Cmd>(), Row<F198Cmd>(), Row<F219Cmd>(), Row<F301Cmd>(), Row<F303Cmd>(),
    Row<F310Cmd>(), Row<F319Cmd>(), Row<F327Cmd>(), Row<F332Cmd>(), Row<F335Cmd>(), Row<F366Cmd>(),
    Row<F503Cmd>(), Row<F504Cmd>(), Row<F506Cmd>(), Row<F507Cmd>(), Row<F515Cmd>(), Row<F550Cmd>(),
    Row<F708Cmd>(), Row<F807Cmd>(), Row<F839Cmd>(),
};

constexpr bool InStepWithCatalogue() {
  size_t index = 0;
  for (const CommandRow& row : kRows) {
    if (row.maker != Maker::kFactory) continue;
    if (index == std::size(kFactory) || kFactory[index].code != row.code) return false;
    ++index;
  }
  return index == std::size(kFactory);
}
static_assert(InStepWithCatalogue(), "the factory makes the rows that say so, in code order");

}  // namespace

std::unique_ptr<CommandBase> CreateCommand(Connect::IChannel& channel, int32_t code,
                                           CommandArguments arguments) {
  const FactoryRow* row =
      std::lower_bound(std::begin(kFactory), std::end(kFactory), code,
                       [](const FactoryRow& a, int32_t wanted) { return a.code < wanted; });
  if (row == std::end(kFactory) || row->code != code) return nullptr;
  return row->make(channel, std::move(arguments));
}

}  // namespace Nuv::Command
