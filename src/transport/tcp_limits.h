#ifndef NUV_TRANSPORT_TCP_LIMITS_H_
#define NUV_TRANSPORT_TCP_LIMITS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/waiter.h"

namespace Nuv::Transport {

// How long a printer on TCP may hold its caller.
struct TcpLimits {
  int connectMs = 30000;
  // A write fails when the printer takes no byte for `stallMs`, and after `stallMs` and
  // `per64KiBMs` for each 64 KiB in all.
  int stallMs = 30000;
  int per64KiBMs = 1000;
  // So much of a reply is kept; no printer's is longer.
  size_t replyBytes = 65536;
  // Of what a printer sends without a pause so much is thrown away before it is dropped.
  int discardMs = 2000;
  size_t discardBytes = size_t{16} << 20;
};

// How the rest of a write went.
enum class WriteEnd {
  kTaken,     // the system took all
  kNotTaken,  // no byte for too long, or too few, or nobody waits for it any more
  kLost,      // the connection has ended
};

// Writes the `left` bytes that the system did not take at once. `takeMore` hands over what fits and
// tells what is left then, below 0 when the connection has ended. The socket is waited on for
// writing only: a printer that sends and does not read would keep a wait for both busy for ever.
WriteEnd FinishWrite(Platform::Handle socket, int64_t& left, const TcpLimits& limits,
                     const Platform::Waiter& waiter, const std::function<int64_t()>& takeMore);

// Counts what is thrown away in one go.
class DiscardLimit {
 public:
  DiscardLimit(const TcpLimits& limits, const Platform::Clock& clock)
      : limits_(limits), clock_(clock) {}

  // False, with a diagnostic, when the printer is to be dropped.
  bool Allows(size_t bytes);

  size_t Thrown() const { return thrown_; }

 private:
  const TcpLimits& limits_;
  const Platform::Clock& clock_;
  size_t thrown_ = 0;
  std::optional<Platform::Deadline> end_;  // from the first bytes on
};

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_TCP_LIMITS_H_
