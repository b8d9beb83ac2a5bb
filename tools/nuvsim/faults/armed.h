// The faults that are armed on one printer, in the order in which they were armed.
//
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_FAULTS_ARMED_H_
#define NUVSIM_FAULTS_ARMED_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <vector>

#include "nuvsim/faults/vocabulary.h"

namespace NuvSim {

class FaultList {
 public:
  void Add(const Fault& fault);
  void Clear();
  size_t Size() const { return faults_.size(); }
  uint64_t Applied() const { return applied_; }

  // Takes the fault that applies to the answer of this command, if any.
  std::optional<Fault> TakeForAnswer(int code);

  // Takes a report of a full buffer for this command.
  bool TakeBufferFull(int code);

  // Takes a refusal of what comes over USB: for how long, or zero for one that stays until Clear().
  std::optional<std::chrono::milliseconds> TakeRefusal();

  // Takes every fault that applies to a search.
  std::vector<Fault> TakeForSearch();

  // How many further bytes may be received before a fault on the connection; the largest value when
  // none is counting.
  uint64_t BytesBeforeCut();

  // Counts received bytes, no more than BytesBeforeCut(); takes the fault that is due.
  std::optional<Fault> CountBytes(uint64_t bytes);

  // A command was received, and its bytes are counted: from here on those behind it may count.
  void CommandCame(int code);

 private:
  struct Armed {
    Fault fault;
    uint64_t bytesLeft = 0;  // before a fault on the connection, once it counts
    bool isCounting = false;
    bool isShown = false;  // a lasting one has taken effect
  };
  using Iterator = std::list<Armed>::iterator;

  static void CountAnew(Armed& armed);
  Iterator NextCut();
  Iterator Apply(Iterator armed);

  std::list<Armed> faults_;
  uint64_t applied_ = 0;
};

}  // namespace NuvSim

#endif  // NUVSIM_FAULTS_ARMED_H_
