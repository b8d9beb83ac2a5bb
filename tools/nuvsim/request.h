// A command line taken apart, and the reading of its parameters.
#ifndef NUVSIM_REQUEST_H_
#define NUVSIM_REQUEST_H_

#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

namespace nuvsim {

// The views are into the line.
struct Request {
  std::string_view head;                     // "F" and the code as it was sent
  int code = 0;                              // -1 when the code is no number that fits
  std::vector<std::string_view> parameters;  // split at blanks
  // What follows the first blank, as it was sent: names may hold anything. Unset without a blank.
  std::optional<std::string_view> rest;
};

Request ParseRequest(std::string_view line);

// The whole of `text` as a decimal number.
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const char* const last = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), last, number);
  if (text.empty() || parsed.ec != std::errc() || parsed.ptr != last) return std::nullopt;
  return number;
}

// The number behind the letter `tag` in the parameter at `place` (from 0), if there is one.
std::optional<int> TaggedNumber(const Request& request, std::size_t place, char tag);

// As above, of a request that has this one parameter.
std::optional<int> OnlyNumber(const Request& request, char tag);

// What follows `prefix` in `text`; empty when it does not begin so.
std::optional<std::string_view> Behind(std::string_view prefix, std::string_view text);

}  // namespace nuvsim

#endif  // NUVSIM_REQUEST_H_
