#include "nuvsim/faults/armed.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace NuvSim {
namespace {

constexpr int kSearchCode = 195;

bool IsOnAnswer(FaultKind kind) { return kind <= FaultKind::kReset; }

bool IsOnConnection(FaultKind kind) {
  return kind >= FaultKind::kDropAfter && kind <= FaultKind::kStall;
}

bool IsOnSearch(const Fault& fault) {
  if (fault.kind >= FaultKind::kEcho) return fault.code == 0 || fault.code == kSearchCode;
  return fault.code == kSearchCode &&
         (fault.kind == FaultKind::kSilent || fault.kind == FaultKind::kLate);
}

// Passes over one occasion while the fault still has some to skip.
bool Skips(Fault& fault) {
  if (fault.skip == 0) return false;
  --fault.skip;
  return true;
}

}  // namespace

void FaultList::Add(const Fault& fault) {
  if (fault.count == 0) return;
  faults_.push_back({fault});
  CountAnew(faults_.back());
}

void FaultList::Clear() { faults_.clear(); }

FaultList::Iterator FaultList::Apply(Iterator armed) {
  ++applied_;
  if (armed->fault.count < 0 || --armed->fault.count > 0) return std::next(armed);
  return faults_.erase(armed);
}

std::optional<Fault> FaultList::TakeForAnswer(int code) {
  for (auto each = faults_.begin(); each != faults_.end(); ++each) {
    Fault& fault = each->fault;
    if (!IsOnAnswer(fault.kind) || (fault.code != 0 && fault.code != code)) continue;
    if (Skips(fault)) continue;
    Fault taken = fault;
    Apply(each);
    return taken;
  }
  return std::nullopt;
}

bool FaultList::TakeBufferFull(int code) {
  for (auto each = faults_.begin(); each != faults_.end(); ++each) {
    Fault& fault = each->fault;
    if (fault.kind != FaultKind::kBufferFull || (fault.code != 0 && fault.code != code)) continue;
    if (Skips(fault)) continue;
    Apply(each);
    return true;
  }
  return false;
}

std::optional<std::chrono::milliseconds> FaultList::TakeRefusal() {
  const auto armed = std::find_if(faults_.begin(), faults_.end(), [](const Armed& each) {
    return each.fault.kind == FaultKind::kNak;
  });
  if (armed == faults_.end() || Skips(armed->fault)) return std::nullopt;
  const std::chrono::milliseconds time = armed->fault.delay;
  if (time.count() > 0) {
    Apply(armed);
  } else if (!std::exchange(armed->isShown, true)) {
    ++applied_;
  }
  return time;
}

std::vector<Fault> FaultList::TakeForSearch() {
  std::vector<Fault> taken;
  for (auto each = faults_.begin(); each != faults_.end();) {
    if (!IsOnSearch(each->fault) || Skips(each->fault)) {
      ++each;
      continue;
    }
    taken.push_back(each->fault);
    each = Apply(each);
  }
  return taken;
}

void FaultList::CountAnew(Armed& armed) {
  armed.bytesLeft = std::max<uint64_t>(armed.fault.size, 1);
  armed.isCounting = armed.fault.code == 0;
}

// The one armed first counts, alone, until it is used up.
FaultList::Iterator FaultList::NextCut() {
  return std::find_if(faults_.begin(), faults_.end(),
                      [](const Armed& each) { return IsOnConnection(each.fault.kind); });
}

uint64_t FaultList::BytesBeforeCut() {
  const auto armed = NextCut();
  const bool counts = armed != faults_.end() && armed->isCounting;
  return counts ? armed->bytesLeft : std::numeric_limits<uint64_t>::max();
}

std::optional<Fault> FaultList::CountBytes(uint64_t bytes) {
  const auto armed = NextCut();
  if (armed == faults_.end() || !armed->isCounting) return std::nullopt;
  armed->bytesLeft -= bytes;
  if (armed->bytesLeft > 0) return std::nullopt;
  CountAnew(*armed);
  if (Skips(armed->fault)) return std::nullopt;
  Fault taken = armed->fault;
  Apply(armed);
  return taken;
}

void FaultList::CommandCame(int code) {
  const auto armed = NextCut();
  if (armed != faults_.end() && armed->fault.code == code) armed->isCounting = true;
}

}  // namespace NuvSim
