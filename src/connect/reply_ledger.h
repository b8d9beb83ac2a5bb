#ifndef NUV_CONNECT_REPLY_LEDGER_H_
#define NUV_CONNECT_REPLY_LEDGER_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace Nuv::Connect {

// The data that was written on one connection, and how much of it the printer's replies to the
// requests between have confirmed. A printer answers its requests in their order, each with one
// line.
//
// Thread-safety: none; the channel keeps it under its lock.
class ReplyLedger {
 public:
  // A new connection: nothing written, nothing owed.
  void Reset() { *this = ReplyLedger(); }

  // `size` bytes of data were handed to the link, whether or not it took them all.
  void Wrote(size_t size) { written_ += size; }
  // A request was written, which owes an answer.
  void Asked(const std::string& request);

  // A reply was read. With the code of its request it confirms all that was written until that.
  void Answered(const std::string& reply);
  // A reply was thrown away.
  void Discarded();
  // Nobody waits for the reply to the last request any more; it may still come.
  void GiveUp() { answered_ = true; }
  // What is still owed will not come any more.
  void OweNothing() { owed_.clear(); }

  bool Owes() const { return !owed_.empty(); }
  // Whether the last request was answered, or given up.
  bool Answered() const { return answered_; }
  bool Unconfirmed() const { return confirmed_ < written_; }

 private:
  struct Debt {
    std::string code;   // as written in the request
    uint64_t position;  // bytes written until the request
  };

  std::deque<Debt> owed_;
  uint64_t written_ = 0;
  uint64_t confirmed_ = 0;
  bool answered_ = true;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_REPLY_LEDGER_H_
