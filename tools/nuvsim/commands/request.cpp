#include "nuvsim/commands/request.h"

#include <algorithm>

#include "nuvsim/printer/jobs.h"

namespace NuvSim {
namespace {

// No command is near this long; what exceeds it is cut off.
constexpr size_t kLongestCommand = 65536;

bool IsCommand(std::string_view line) {
  return line.size() >= 2 && line[0] == 'F' && line[1] >= '0' && line[1] <= '9';
}

std::vector<std::string_view> SplitAtBlanks(std::string_view text) {
  std::vector<std::string_view> words;
  while (true) {
    const size_t start = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(start);
    if (text.empty()) return words;
    const size_t length = std::min(text.find(' '), text.size());
    words.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
}

}  // namespace

LineSplitter::LineSplitter(uint64_t longestData, LineSink& sink)
    : longestData_(longestData), sink_(sink) {}

size_t LineSplitter::Feed(std::string_view bytes) {
  const size_t fed = bytes.size();
  while (!bytes.empty()) {
    const size_t end = bytes.find('\n');
    const bool ends = end != std::string_view::npos;
    const std::string_view piece = bytes.substr(0, ends ? end + 1 : bytes.size());
    bytes.remove_prefix(piece.size());
    bool wasCommand = false;
    if (ends && held_.empty() && discarded_ == 0) {
      wasCommand = Dispatch(piece);
    } else {
      Hold(piece);
      if (ends) {
        wasCommand = Dispatch(held_);
        held_.clear();
        discarded_ = 0;
      }
    }
    if (wasCommand) break;
  }
  return fed - bytes.size();
}

void LineSplitter::Hold(std::string_view piece) {
  // The first two bytes tell the two kinds of line apart, so they are held in any case.
  while (held_.size() < 2 && !piece.empty()) {
    held_ += piece.front();
    piece.remove_prefix(1);
  }
  const uint64_t limit = IsCommand(held_) ? kLongestCommand : longestData_;
  const uint64_t room = limit - std::min<uint64_t>(limit, held_.size());
  const auto kept = static_cast<size_t>(std::min<uint64_t>(room, piece.size()));
  held_.append(piece.substr(0, kept));
  discarded_ += piece.size() - kept;
}

bool LineSplitter::Dispatch(std::string_view line) {
  if (IsCommand(line)) {
    sink_.OnCommand(line.substr(0, line.size() - LineEndLength(line)));
    return true;
  }
  const uint64_t length = line.size() + discarded_;
  if (length > longestData_) {
    sink_.OnLostData(length);
  } else {
    sink_.OnData(line);
  }
  return false;
}

void LineSplitter::Finish() {
  if (!held_.empty() && held_ != "F" && !IsCommand(held_)) Dispatch(held_);
  held_.clear();
  discarded_ = 0;
}

Request ParseRequest(std::string_view line) {
  Request request;
  const size_t firstLength = std::min(line.find(' '), line.size());
  const std::string_view first = line.substr(0, firstLength);
  if (firstLength < line.size()) request.rest = line.substr(firstLength + 1);
  if (first.empty()) return request;
  const size_t headLength = std::min(first.find_first_not_of("0123456789", 1), first.size());
  request.head = first.substr(0, headLength);
  request.code = headLength == first.size() ? ParseNumber<int>(first.substr(1)).value_or(-1) : -1;
  if (request.rest) request.parameters = SplitAtBlanks(*request.rest);
  return request;
}

std::optional<int> TaggedNumber(const Request& request, size_t place, char tag) {
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

}  // namespace NuvSim
