#include "nuvsim/request.h"

#include <algorithm>

namespace nuvsim {
namespace {

std::vector<std::string_view> SplitAtBlanks(std::string_view text) {
  std::vector<std::string_view> words;
  while (true) {
    const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(start);
    if (text.empty()) return words;
    const std::size_t length = std::min(text.find(' '), text.size());
    words.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
}

}  // namespace

Request ParseRequest(std::string_view line) {
  Request request;
  const std::size_t firstLength = std::min(line.find(' '), line.size());
  const std::string_view first = line.substr(0, firstLength);
  if (firstLength < line.size()) request.rest = line.substr(firstLength + 1);
  if (first.empty()) return request;
  const std::size_t headLength = std::min(first.find_first_not_of("0123456789", 1), first.size());
  request.head = first.substr(0, headLength);
  request.code = headLength == first.size() ? ParseNumber<int>(first.substr(1)).value_or(-1) : -1;
  if (request.rest) request.parameters = SplitAtBlanks(*request.rest);
  return request;
}

std::optional<int> TaggedNumber(const Request& request, std::size_t place, char tag) {
  if (place >= request.parameters.size()) return std::nullopt;
  const auto digits = Behind(std::string_view(&tag, 1), request.parameters[place]);
  return digits ? ParseNumber<int>(*digits) : std::nullopt;
}

std::optional<int> OnlyNumber(const Request& request, char tag) {
  return request.parameters.size() == 1 ? TaggedNumber(request, 0, tag) : std::nullopt;
}

std::optional<std::string_view> Behind(std::string_view prefix, std::string_view text) {
  if (text.substr(0, prefix.size()) != prefix) return std::nullopt;
  return text.substr(prefix.size());
}

}  // namespace nuvsim
