#ifndef NUV_TRANSPORT_SEARCH_BOUNDS_H_
#define NUV_TRANSPORT_SEARCH_BOUNDS_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "platform/clock.h"

namespace Nuv::Transport {

// What a search takes from one network: a device that never stops sending holds no caller and fills
// no memory. The search is over when the time or the answers are used up; that is told by one
// diagnostic, and the rest is dropped.
//
// Thread-safety: none.
class SearchBounds {
 public:
  static constexpr size_t kMostAnswers = 4096;
  static constexpr size_t kMostBytes = size_t{1} << 20;

  // How long a search with the time limit `timeoutMs` lasts at most on one network.
  static std::chrono::milliseconds Longest(int timeoutMs);

  // The search begins now. `network`: its name in the diagnostic. `clock` outlives this object.
  SearchBounds(std::string network, int timeoutMs, Platform::Clock& clock);

  // Milliseconds to wait for the next answer: the time limit, or less at the end. 0: it is over.
  int WaitMs() const;

  // Counts an answer of `bytes`. False: there were too many, the search is over.
  bool Takes(size_t bytes);

 private:
  const std::string network_;
  const int timeoutMs_;
  const Platform::Clock& clock_;
  const std::chrono::nanoseconds end_;
  size_t answers_ = 0;
  size_t bytes_ = 0;
};

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_SEARCH_BOUNDS_H_
