#include "nuvsim/raw_phase.h"

#include <algorithm>
#include <utility>

namespace nuvsim {
namespace {

constexpr std::size_t kNameBytes = 4;
constexpr std::size_t kHeadBytes = 8;  // name and length
constexpr std::uint64_t kKeyBytes = 32;
constexpr std::string_view kFrameName = "L105";
constexpr std::uint32_t kLargestPayload = 10232;  // of a frame: 10240 bytes on the wire

bool MayBecome(std::string_view begun, std::string_view name) {
  const std::size_t common = std::min(begun.size(), name.size());
  return begun.substr(0, common) == name.substr(0, common);
}

std::uint32_t LengthOf(std::string_view head) {
  std::uint32_t length = 0;
  for (std::size_t i = kHeadBytes; i-- > kNameBytes;) {
    length = length << 8 | static_cast<unsigned char>(head[i]);
  }
  return length;
}

enum class Verdict { kNo, kPerhaps, kYes };

// A key is any bytes, so at its place a command must be more than "F" and a digit: a code, ended.
Verdict IsWholeHead(std::string_view begun) {
  constexpr std::size_t kLongestCode = 4;
  if (begun.front() != 'F') return Verdict::kNo;
  const std::size_t end = std::min(begun.find_first_not_of("0123456789", 1), begun.size());
  if (end - 1 > kLongestCode) return Verdict::kNo;
  if (end == begun.size()) return Verdict::kPerhaps;
  const bool ends = begun[end] == ' ' || begun[end] == '\r' || begun[end] == '\n';
  return end > 1 && ends ? Verdict::kYes : Verdict::kNo;
}

}  // namespace

std::size_t RawPhase::Take(std::string_view bytes) {
  std::size_t taken = 0;
  while (taken < bytes.size() && !over_) {
    if (left_ == 0) {
      held_ += bytes[taken++];
      Decide();
      continue;
    }
    const std::string_view piece = bytes.substr(
        taken, static_cast<std::size_t>(std::min<std::uint64_t>(left_, bytes.size() - taken)));
    sink_.OnBytes(piece);
    taken += piece.size();
    left_ -= piece.size();
    if (left_ == 0) PieceCame();
  }
  return taken;
}

void RawPhase::Stop() {
  if (over_) return;
  // The head of something that never came whole is no line.
  if (held_.size() >= kNameBytes) held_.clear();
  End();
}

void RawPhase::End() {
  over_ = true;
  left_ = 0;
  sink_.OnItemEnd();
}

std::string RawPhase::TakeUndecided() { return std::exchange(held_, std::string()); }

HeaderPhase::HeaderPhase(RawSink& sink, bool hasKey, std::vector<std::string> records)
    : RawPhase(sink), mayBeKey_(hasKey), records_(std::move(records)) {}

void HeaderPhase::Decide() {
  const bool mayBeRecord =
      std::any_of(records_.begin(), records_.end(),
                  [this](const std::string& name) { return MayBecome(Undecided(), name); });
  if (mayBeRecord) {
    if (Undecided().size() == kHeadBytes) DecideRecord();
    return;
  }
  const Verdict isCommand = mayBeKey_ ? IsWholeHead(Undecided()) : Verdict::kYes;
  if (isCommand == Verdict::kYes) {
    End();
  } else if (isCommand == Verdict::kNo) {
    mayBeKey_ = false;
    const std::string begun = TakeUndecided();
    sink_.OnItem("key", kKeyBytes);
    sink_.OnBytes(begun);
    Expect(kKeyBytes - begun.size());
  }
}

void HeaderPhase::DecideRecord() {
  mayBeKey_ = false;
  const std::string head = TakeUndecided();
  const std::string name = head.substr(0, kNameBytes);
  records_.erase(std::find(records_.begin(), records_.end(), name));
  sink_.OnItem(name, LengthOf(head));
  Expect(LengthOf(head));
  if (LengthOf(head) == 0) PieceCame();
}

void HeaderPhase::PieceCame() {
  sink_.OnItemEnd();
  if (records_.empty()) End();
}

FramedPhase::FramedPhase(RawSink& sink, const std::string& kind, std::uint64_t bytes)
    : RawPhase(sink), itemLeft_(bytes) {
  sink.OnItem(kind, bytes);
}

void FramedPhase::Decide() {
  if (!MayBecome(Undecided(), kFrameName)) {
    End();
    return;
  }
  if (Undecided().size() < kHeadBytes) return;
  const std::uint32_t length = LengthOf(TakeUndecided());
  sink_.OnBlock(length);
  if (length == 0 || length > kLargestPayload || length > itemLeft_) {
    End();
    return;
  }
  itemLeft_ -= length;
  Expect(length);
}

void FramedPhase::PieceCame() {
  if (itemLeft_ == 0) End();
}

ImagePhase::ImagePhase(RawSink& sink, const std::string& kind, std::uint64_t bytes)
    : RawPhase(sink) {
  sink.OnItem(kind, bytes);
  Expect(bytes);
}

}  // namespace nuvsim
