#include "nuvsim/fault_list.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace nuvsim {
namespace {

constexpr int kSearchCode = 195;

bool IsOnAnswer(FaultKind kind) { return kind <= FaultKind::kReset; }

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
  if (fault.count != 0) faults_.push_back({fault, std::max<std::uint64_t>(fault.size, 1)});
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
    const Fault taken = fault;
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

bool FaultList::IsCut(const Armed& armed) {
  return armed.fault.kind == FaultKind::kDropAfter || armed.fault.kind == FaultKind::kResetAfter;
}

std::uint64_t FaultList::BytesBeforeCut() const {
  const auto armed = std::find_if(faults_.begin(), faults_.end(), IsCut);
  return armed == faults_.end() ? std::numeric_limits<std::uint64_t>::max() : armed->bytesLeft;
}

Closing FaultList::CountBytes(std::uint64_t bytes) {
  const auto armed = std::find_if(faults_.begin(), faults_.end(), IsCut);
  if (armed == faults_.end()) return Closing::kNone;
  armed->bytesLeft -= bytes;
  if (armed->bytesLeft > 0) return Closing::kNone;
  armed->bytesLeft = std::max<std::uint64_t>(armed->fault.size, 1);
  if (Skips(armed->fault)) return Closing::kNone;
  const bool drops = armed->fault.kind == FaultKind::kDropAfter;
  Apply(armed);
  return drops ? Closing::kDrop : Closing::kReset;
}

}  // namespace nuvsim
