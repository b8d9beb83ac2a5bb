#include "command/decimal.h"

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <system_error>

#include "command/reply_error.h"

namespace Nuv::Command {

int32_t ParseDecimal(const std::string& text, int32_t code) {
  constexpr int kBase = 10;
  char* end = nullptr;
  errno = 0;
  const long long number = std::strtoll(text.c_str(), &end, kBase);
  if (end == text.c_str()) throw MalformedNumber("invalid stoi argument", code);
  if (errno == ERANGE || number < std::numeric_limits<int32_t>::min() ||
      number > std::numeric_limits<int32_t>::max()) {
    throw NumberOutOfRange("stoi argument out of range", code);
  }
  return static_cast<int32_t>(number);
}

float ParseFraction(const std::string& text, int32_t code) {
  float number = 0;
  const std::from_chars_result parsed =
      std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec == std::errc::result_out_of_range) {
    throw NumberOutOfRange("stof argument out of range", code);
  }
  if (parsed.ec != std::errc()) throw MalformedNumber("invalid stof argument", code);
  return number;
}

std::string Fixed(double number) {
  constexpr int kPlaces = 6;
  char text[400];  // the longest double has 309 digits before the point
  const std::to_chars_result written =
      std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, kPlaces);
  return {text, written.ptr};
}

}  // namespace Nuv::Command
