// Why what was asked of a printer did not come about. Whoever fails first tells, and everybody
// above hands it on: it is returned with the call and kept nowhere, since threads share the
// channel. The result codes of the exports and what diagnostics say are made of it here.
#ifndef NUV_COMMAND_REASON_H_
#define NUV_COMMAND_REASON_H_

namespace Nuv::Connect {

enum class Reason {
  kNone,         // it did come about
  kSilence,      // the printer took the request and did not answer in time
  kNotTaken,     // it did not take the bytes in time, so this side closed the link
  kEnded,        // it ended the link, or was unplugged
  kUnreachable,  // it cannot be opened
  kNotOpen,      // nothing is open
  kOtherReply,   // replies to other commands came
  kMalformed,    // a reply that cannot be read, or a command that cannot be sent
  kRefused,      // it answered without "OK"
  kGivenUp       // this side stopped waiting
};

// What was under way.
enum class Step {
  kOpening,          // of the link
  kCommand,          // a request and its reply
  kStream,           // bytes of a job, which no reply confirms
  kWaitingForSpace,  // a job that waits until the printer has room
};

// The result code (NuvResult) of what ended so.
int ResultOf(Reason reason, Step step);

// What an error callback is told: the status of a failed transaction, or a refusal.
enum ConnectError : int {
  kErrorNoReply = -1,     // nothing usable came back
  kErrorOtherReply = -2,  // only replies to other commands came back
  kErrorRefused = 29      // the printer answered without "OK"
};
ConnectError ErrorOf(Reason reason);
int ResultOf(ConnectError error);

// "the printer did not answer in time"; empty for none.
const char* WordsFor(Reason reason);

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_REASON_H_
