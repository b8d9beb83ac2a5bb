#include "command/decimal.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <system_error>

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

float ParseFraction(const std::string& text) {
  float number = 0;
  const std::from_chars_result parsed =
      std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec == std::errc::result_out_of_range) {
    throw std::out_of_range("stof argument out of range");
  }
  if (parsed.ec != std::errc()) throw std::invalid_argument("invalid stof argument");
  return number;
}

std::string Fixed(double number) {
  char text[400];  // the longest double has 309 digits before the point
  std::snprintf(text, sizeof text, "%f", number);
  for (char* c = text; *c != '\0'; ++c) {
    if (*c == ',') *c = '.';
  }
  return text;
}

}  // namespace Nuv::Command
