#ifndef NUV_CONNECT_LINK_H_
#define NUV_CONNECT_LINK_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "command/i_channel.h"
#include "platform/waiter.h"
#include "transport/link_state.h"

namespace Nuv::Connect {

using Transport::LinkState;

// One way to a printer: USB, plain sockets, the network.
//
// Thread-safety: none; the channel serialises the calls. Waits end early as its waiter says.
class Link {
 public:
  virtual ~Link() = default;
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  // Opens printer `index` of the link's last search.
  virtual Reason Open(int index) = 0;

  // Opens the printer again that was opened last, whatever a later search found. `job`: a job's
  // bytes are on the connection.
  virtual Reason Reopen(bool job) = 0;

  virtual void Close() = 0;

  // Without waiting. What has come may be thrown away, so that an end behind it shows, which is
  // told until the next opening or closing.
  virtual LinkState Look() = 0;

  // Whether a printer is open that opening again keeps as it is; sockets are always connected anew.
  virtual bool KeepsOpen() { return false; }

  // Throws replies away that nobody waits for any more, until none came for `quietMs`, for
  // `limitMs` at most. True when there was any.
  virtual bool Discard(int quietMs, int limitMs) = 0;

  // Throws away what has come, where Write does not do so itself.
  virtual bool DiscardInput() { return false; }

  // Sends `length` bytes. Of none: what a patient write has left queued. `patient`: what is not
  // taken in time stays queued, if the link can.
  virtual Reason Write(const uint8_t* data, size_t length, bool patient) = 0;

  // The next reply, or why there is none.
  virtual Reply ReadReply() = 0;

  // Names the printer at `index` of the last search, so that it is told from any other that comes
  // to be there; empty when there is none.
  virtual std::string Identity(int index) const = 0;

 protected:
  // `waiter` outlives the link.
  explicit Link(const Platform::Waiter& waiter) : waiter_(waiter) {}

  // How an opening went.
  Reason Opening(bool opened) const {
    if (opened) return Reason::kNone;
    return waiter_.Over() ? Reason::kGivenUp : Reason::kUnreachable;
  }

  // Why the printer did nothing: as the link tells, or `otherwise` if it is alive.
  Reason Failure(Reason otherwise) {
    if (waiter_.Over()) return Reason::kGivenUp;
    switch (Look()) {
      case LinkState::kClosed:
        return Reason::kNotOpen;
      case LinkState::kEnded:
        return Reason::kEnded;
      case LinkState::kAlive:
        break;
    }
    return otherwise;
  }

  const Platform::Waiter& waiter_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LINK_H_
