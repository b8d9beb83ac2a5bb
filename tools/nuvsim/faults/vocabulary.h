// Faults that a simulated printer commits on demand, and the vocabulary that names them.
#ifndef NUVSIM_FAULTS_VOCABULARY_H_
#define NUVSIM_FAULTS_VOCABULARY_H_

#include <chrono>
#include <cstdint>
#include <string>

namespace NuvSim {

class JsonObject;

enum class FaultKind {
  // On the answer to a command. The command itself is carried out.
  kSilent,      // no answer
  kLate,        // answer after `delay`
  kPieces,      // answer in pieces of `size` bytes, `delay` apart
  kOtherCode,   // the head of the answer is `text`
  kAnswer,      // the answer is `text`
  kRefuse,      // "NG" in place of "OK", fields unchanged
  kGarbage,     // `size` bytes that are no text, then a line end
  kBadNumber,   // the value of the field `field` is `text`
  kTwice,       // the answer comes twice
  kOversized,   // the answer is padded to `size` KiB
  kZeroPacket,  // over USB an empty packet comes ahead of the answer
  kEndless,     // in place of the answer `text` again and again, `size` bytes every `delay`
  kDrop,        // the connection is ended (FIN) in place of the answer
  kReset,       // the connection is reset (RST) in place of the answer
  // On the connection, after `size` further received bytes; with `code` those behind that command.
  kDropAfter,   // ended
  kResetAfter,  // reset
  kGoneAfter,   // ended, and none is accepted any more
  kStall,       // nothing more is read for `delay`; 0: until the faults are cleared
  // On what the host sends over USB.
  kNak,  // nothing is taken for `delay`; 0: until the faults are cleared
  // On the reported buffer.
  kBufferFull,  // free buffer reported as 0
  // On a search; all but kBadPort come in addition to, and before, the right answer.
  kEcho,       // the search message comes back
  kDuplicate,  // `size` further copies of the answer, `delay` apart
  kMalformed,  // datagrams that are no proper answer, or the one datagram `text`
  kForeign,    // datagrams of other protocols, or the one datagram `text`
  kBadPort,    // the PORT value of the answer is `text`
  kBurst,      // `size` distinct valid answers, `delay` apart
};

// One armed fault. Of the faults on the answer that match a command, the one armed first applies,
// alone, until it is used up; so faults armed one after the other make a sequence.
struct Fault {
  FaultKind kind = FaultKind::kSilent;
  int code = 0;   // command it is limited to; 0: any. 195 with kSilent or kLate: searches.
  int count = 1;  // times to apply; -1: for ever
  int skip = 0;   // matching occasions to pass over first
  std::chrono::milliseconds delay{0};
  uint64_t size = 0;
  std::string field;
  std::string text;
};

// A fault of this kind with the defaults of the vocabulary.
Fault MakeFault(FaultKind kind, int code = 0, int count = 1);

// Name in the vocabulary ("late", "bad-number").
const char* FaultName(FaultKind kind);

// Reads "kind,key=value,..." ("late,code=102,count=2,ms=500"; see README.md for the keys).
// Throws ConfigError with a message for the user.
Fault ParseFault(const std::string& words);

// Reads {"kind": "late", "code": 102, "count": 2, "ms": 500}: the same keys. Throws ConfigError.
Fault ParseFault(JsonObject& object);

}  // namespace NuvSim

#endif  // NUVSIM_FAULTS_VOCABULARY_H_
