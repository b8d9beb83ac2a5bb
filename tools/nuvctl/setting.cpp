#include "setting.h"

namespace nuvctl {

CommandError NotConfirmed(const std::string& name, const Report& actual) {
  return CommandError("not_confirmed", kPrinterFailed,
                      "The printer accepted " + name + ", but then told another value",
                      "That is what it has now; check at its panel, then set it again.", actual);
}

}  // namespace nuvctl
