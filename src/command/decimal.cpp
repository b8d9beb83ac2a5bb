#include "command/decimal.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace Nuv::Command {

int32_t ParseDecimal(const std::string& text) {
  constexpr int kBase = 10;
  char* end = nullptr;
  errno = 0;
  const long long number = std::strtoll(text.c_str(), &end, kBase);
  if (end == text.c_str()) throw std::invalid_argument("invalid stoi argument");
  if (errno == ERANGE || number < std::numeric_limits<int32_t>::min() ||
      number > std::numeric_limits<int32_t>::max()) {
    throw std::out_of_range("stoi argument out of range");
  }
  return static_cast<int32_t>(number);
}

}  // namespace Nuv::Command
