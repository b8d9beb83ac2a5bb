#ifndef NUV_TRANSPORT_SEARCH_TURN_H_
#define NUV_TRANSPORT_SEARCH_TURN_H_

#include <QLockFile>
#include <QString>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/clock.h"

namespace Nuv::Transport {

// The right to search the network. All searches of a host bind the same port, and the system hands
// an answer to one of them only; so searches take turns: those of this process, and by a lock file
// those of this user's other programs.
//
// Thread-safety: safe; a turn ends on the thread that took it.
class SearchTurn {
 public:
  // Waits until no other search is under way, at most as long as a search with `timeoutMs` may
  // last. When that is over, or no lock file can be made, the search is made all the same, with a
  // diagnostic.
  SearchTurn(uint16_t port, int timeoutMs, Platform::Clock& clock = Platform::SystemClock());

  // Not had until Try says so.
  explicit SearchTurn(uint16_t port);

  // Takes the turn if no other search is under way; then, or when it is had, true.
  bool Try();

  // Ends the turn.
  ~SearchTurn() = default;
  SearchTurn(const SearchTurn&) = delete;
  SearchTurn& operator=(const SearchTurn&) = delete;

 private:
  std::unique_lock<std::mutex> process_;
  std::unique_ptr<QLockFile> file_;  // null when none can be made
};

// The lock file for searches on `port`, in the temporary folder: one for each user, and for each
// network that this system can give to a process. Empty, with a diagnostic, when there is no place
// that is the user's own.
QString SearchLockFile(uint16_t port);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_SEARCH_TURN_H_
