#ifndef NUV_COMMAND_I_CHANNEL_H_
#define NUV_COMMAND_I_CHANNEL_H_

#include <string>

#include "nuvconnect/IConnect.h"
#include "platform/interrupt.h"

namespace Nuv::Connect {

// Why an exchange failed. Links tell of the first, commands of what was wrong with a reply.
enum class LinkFailure {
  kNone,
  kSilence,    // the printer took the request and did not answer in time
  kNotTaken,   // it did not take the request in time, so this side closed the link
  kEnded,      // it ended the link, or was unplugged
  kNotOpen,    // nothing is open
  kGivenUp,    // this side stopped waiting
  kCutShort,   // a reply came, but too little of it
  kOtherReply  // a reply to another command came
};

// A reply line, or why there is none.
struct Reply {
  std::string text;
  LinkFailure failure = LinkFailure::kNone;
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
  // As ExecuteCommand. A request that follows an answered one first waits for answers that the
  // printer still owes, at most 2 s; one that is sent `again` throws nothing away, since the answer
  // to its first sending is as good.
  virtual Reply Transact(const Request& request) = 0;

  // As ReceiveReply.
  virtual Reply ReadAgain(Platform::Interrupt* interrupt) = 0;

  // Looks at the link without waiting and without a byte on the wire.
  virtual LinkLook Look() = 0;

  // From BeginJob to EndJob a USB printer that was unplugged is not opened again: what is plugged
  // in has not the beginning of the stream.
  virtual void BeginJob(JobKind kind) = 0;
  // `complete`: all was sent, so that what the link has still queued is waited for.
  virtual void EndJob(bool complete) = 0;
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_I_CHANNEL_H_
