#ifndef NUV_CONNECT_LOCAL_MODE_H_
#define NUV_CONNECT_LOCAL_MODE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/interrupt.h"
#include "transport/link_state.h"

namespace Nuv::Connect {

// One way in which the local link reaches a printer.
//
// Thread-safety: none but for GiveUp; the channel serialises the calls.
class LocalMode {
 public:
  virtual ~LocalMode() = default;

  // Opens printer `index` of the mode's last search.
  virtual bool Open(int index) = 0;

  // Opens the printer again that was opened last, whatever a later search found. `inJob`: it must
  // be the very connection, or one that this side has closed, since a job's bytes are on it.
  virtual bool Reopen(bool inJob) = 0;

  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;

  // Without waiting.
  virtual LinkState Look() = 0;

  // Throws input away until none came for `quietMs`, for `limitMs` at most. True when there was
  // any.
  virtual bool DiscardUntilQuiet(int quietMs, int limitMs) = 0;

  // Sends `length` bytes, after throwing away replies that nobody has read.
  virtual bool Write(const uint8_t* data, size_t length) = 0;

  // Names the printer at `index` of the last search, so that it is told from any other that comes
  // to be there; empty when there is none.
  virtual std::string Identity(int index) const = 0;

  // The next reply line, however many blocks it comes in; what came when no more does within the
  // time limit, which holds for each block, or within 30 s in all; empty when nothing came.
  // `interrupt` (null allowed) ends the wait within 600 ms when it is raised.
  std::string ReadReply(Platform::Interrupt* interrupt);

  // The bytes of the last reply, also after closing; false when there are none.
  bool LastRead(std::vector<uint8_t>& data) const;

  // From now on waits for replies end within 600 ms. On any thread.
  void GiveUp() { givenUp_ = true; }

 protected:
  using GivenUp = std::function<bool()>;

  // How long a transfer may take.
  static constexpr int kTransferTimeoutMs = 3000;

  // `clock` outlives the mode.
  explicit LocalMode(Platform::Clock& clock = Platform::SystemClock()) : clock_(clock) {}

  // One block of a reply; empty when none came in `timeoutMs`, or within 600 ms of `givenUp`.
  virtual std::string ReadBlock(int timeoutMs, const GivenUp& givenUp) = 0;

 private:
  Platform::Clock& clock_;
  std::string lastRead_;
  std::atomic<bool> givenUp_{false};
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LOCAL_MODE_H_
