#include "nuvsim/line_splitter.h"

#include <algorithm>

namespace nuvsim {
namespace {

// No command is near this long; what exceeds it is cut off.
constexpr std::size_t kLongestCommand = 65536;

bool IsCommand(std::string_view line) {
  return line.size() >= 2 && line[0] == 'F' && line[1] >= '0' && line[1] <= '9';
}

}  // namespace

std::size_t LineEndLength(std::string_view line) {
  if (line.empty() || line.back() != '\n') return 0;
  return line.size() >= 2 && line[line.size() - 2] == '\r' ? 2 : 1;
}

LineSplitter::LineSplitter(std::uint64_t longestData, LineSink& sink)
    : longestData_(longestData), sink_(sink) {}

std::size_t LineSplitter::Feed(std::string_view bytes) {
  const std::size_t fed = bytes.size();
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
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
  const std::uint64_t limit = IsCommand(held_) ? kLongestCommand : longestData_;
  const std::uint64_t room = limit - std::min<std::uint64_t>(limit, held_.size());
  const auto kept = static_cast<std::size_t>(std::min<std::uint64_t>(room, piece.size()));
  held_.append(piece.substr(0, kept));
  discarded_ += piece.size() - kept;
}

bool LineSplitter::Dispatch(std::string_view line) {
  if (IsCommand(line)) {
    sink_.OnCommand(line.substr(0, line.size() - LineEndLength(line)));
    return true;
  }
  const std::uint64_t length = line.size() + discarded_;
  if (length > longestData_) {
    sink_.OnLostData(length);
  } else {
    sink_.OnData(line);
  }
  return false;
}

void LineSplitter::Finish() {
  if (!held_.empty() && !IsCommand(held_)) Dispatch(held_);
  held_.clear();
  discarded_ = 0;
}

}  // namespace nuvsim
