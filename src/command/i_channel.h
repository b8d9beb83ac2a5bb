#ifndef NUV_COMMAND_I_CHANNEL_H_
#define NUV_COMMAND_I_CHANNEL_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "command/reason.h"
#include "nuvconnect/IConnect.h"
#include "platform/interrupt.h"

namespace Nuv::Connect {

// A reply line, or why there is none.
struct Reply {
  std::string text;
  Reason reason = Reason::kNone;
};

// One request of a call.
struct Request {
  std::string line;                          // with its line end
  bool again = false;                        // sent before, by the same call
  Platform::Interrupt* interrupt = nullptr;  // raised: the wait for the reply ends; may be null
};

// How the link stands when it is looked at.
struct LinkLook {
  bool alive = false;
  // What was written since the last request whose reply, with its own code, was read on this
  // connection: nobody can tell whether the printer has it.
  bool unconfirmed = false;
};

// What is streamed: lines end with the first block that is not taken; a printer that erases its
// memory for an image takes nothing for a while.
enum class JobKind { kNone, kLines, kImage };

// The channel as commands and jobs see it: what hosts get, and what a bool or a text cannot say.
//
// Thread-safety: as IConnect. The reason of a failure and an interrupt belong to one call, since
// threads share the channel.
class IChannel : public IConnect {
 public:
  // As OpenDevice.
  virtual Reason Reopen() = 0;

  // As SendBytes. Of no bytes: kNone, and nothing is sent.
  virtual Reason Send(const std::vector<uint8_t>& bytes) = 0;

  // As ExecuteCommand. A request that follows an answered one first waits for answers that the
  // printer still owes, at most 2 s; one that is sent `again` throws nothing away, since the answer
  // to its first sending is as good.
  virtual Reply Transact(const Request& request) = 0;

  // As ReceiveReply.
  virtual Reply ReadAgain(Platform::Interrupt* interrupt) = 0;

  // Looks at the link without waiting and without a byte on the wire.
  virtual LinkLook Look() = 0;

  // From BeginJob to EndJob a USB printer that was unplugged is not opened again: what is plugged
  // in has not the beginning of the stream. `interrupt`, raised, ends Reopen and Send meanwhile;
  // may be null.
  virtual void BeginJob(JobKind kind, Platform::Interrupt* interrupt) = 0;
  // `complete`: all was sent, so that what the link has still queued is waited for.
  virtual void EndJob(bool complete) = 0;

  bool OpenDevice() final { return Reopen() == Reason::kNone; }
  bool SendBytes(std::vector<uint8_t> bytes) final {
    return !bytes.empty() && Send(bytes) == Reason::kNone;
  }
  std::string ReceiveReply() final { return ReadAgain(nullptr).text; }
  std::string ExecuteCommand(std::string command) final {
    return Transact({std::move(command)}).text;
  }
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_I_CHANNEL_H_
