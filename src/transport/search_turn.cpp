#include "transport/search_turn.h"

#include "platform/diagnostics.h"
#include "transport/network_device_searcher.h"

namespace Nuv::Transport {

using Platform::Diagnostic;

namespace {

constexpr std::chrono::milliseconds kPoll(50);

std::mutex& ProcessMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

SearchTurn::SearchTurn(uint16_t port) : process_(ProcessMutex(), std::defer_lock) {
  const QString path = SearchLockFile(port);
  if (path.isEmpty()) return;
  file_ = std::make_unique<QLockFile>(path);
  // However long a search lasts, only the end of its program makes its lock void.
  file_->setStaleLockTime(0);
}

SearchTurn::SearchTurn(uint16_t port, int timeoutMs, Platform::Clock& clock) : SearchTurn(port) {
  if (Try()) return;
  const auto end = clock.Now() + NetworkDeviceSearcher::Longest(timeoutMs);
  while (clock.Now() < end) {
    clock.SleepFor(kPoll);
    if (Try()) return;
  }
  Diagnostic("search on port %u: another one does not end; answers may get lost", unsigned{port});
}

bool SearchTurn::Try() {
  if (!process_.owns_lock() && !process_.try_lock()) return false;
  if (file_ == nullptr || file_->isLocked() || file_->tryLock(0)) return true;
  if (file_->error() == QLockFile::LockFailedError) return false;
  Diagnostic("search: no lock file can be made, other programs' searches are not waited for");
  file_.reset();
  return true;
}

}  // namespace Nuv::Transport
