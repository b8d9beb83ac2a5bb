#ifndef NUV_COMMAND_ABSTRACT_COMMAND_H_
#define NUV_COMMAND_ABSTRACT_COMMAND_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "command/i_channel.h"
#include "platform/clock.h"

namespace Nuv::Command {

// Fields of a reply by key. Values stay text; whoever reads one converts it.
using ResultMap = std::map<std::string, std::string>;

// Told of every finished transaction: the command's code, the code that the reply echoed, whether
// the printer said "OK", and the values of the reply.
using ResultCallback =
    std::function<void(int code, int replyCode, bool replyOk, std::vector<std::string> values)>;

// How a transaction ended. Whether the printer accepted the command is a flag of its own.
using TransactionStatus = int;
constexpr TransactionStatus kReplied = 0;      // a reply to this command was read
constexpr TransactionStatus kNoReply = -1;     // the reply held fewer than two tokens
constexpr TransactionStatus kOtherReply = -2;  // the reply belongs to another command

// One exchange with a printer: a numbered request line and its one-line reply.
//
// Thread-safety: none; one thread runs one command. An object is good for one transaction, since
// the reply tokens of a second one would follow those of the first.
class AbstractCommand {
 public:
  AbstractCommand() = default;
  virtual ~AbstractCommand() = default;
  AbstractCommand(const AbstractCommand&) = delete;
  AbstractCommand& operator=(const AbstractCommand&) = delete;

  // Runs the transaction: request, reply, recovery, delivery of the result. Blocks for what the
  // channel waits, and for at most three pauses of a second when it has to recover.
  // Throws what ParseDecimal throws when the reply's head bears no number.
  virtual TransactionStatus Execute() {
    const std::string request = BuildRequest();
    TransactionStatus status = ParseReply(Ask(request, false));
    Recover(status, request);
    DeliverResult();
    return status;
  }

  virtual int GetCode() const = 0;

  // Repairs a failed status by waiting and then reading again or resending the request.
  virtual void Recover(TransactionStatus& /*status*/, const std::string& /*request*/) {}

  // The request line with its line end.
  virtual std::string BuildRequest() const = 0;

  // Splits the reply into tokens, which follow those of an earlier reply of this transaction, and
  // checks the head.
  virtual TransactionStatus ParseReply(const std::string& reply) = 0;

  // The values of the reply, in its order; what counts as one differs by command.
  virtual std::vector<std::string> GetReplyValues() const = 0;

  // Builds the result map and calls the result callback; does nothing without one.
  virtual void DeliverResult() = 0;

  // Why Execute failed, or kNone.
  Connect::Reason GetReason() const { return reason_; }

  // The keyed fields of the reply, after Execute; empty without a result callback.
  const ResultMap& Result() const { return result_; }
  // The same, for one who outlives the command.
  ResultMap TakeResult() { return std::move(result_); }

  // Whoever creates a command binds it before Execute; all must outlive it.
  // `interrupt`, raised, ends the waits of Execute; may be null.
  void Bind(Connect::IChannel& channel, Platform::Clock& clock,
            Platform::Interrupt* interrupt = nullptr) {
    channel_ = &channel;
    clock_ = &clock;
    interrupt_ = interrupt;
  }
  void SetResultCallback(ResultCallback callback) { resultCallback_ = std::move(callback); }

 protected:
  ResultMap result_;
  // The reply to `request`, whose absence leaves its reason in `reason_`.
  std::string Ask(const std::string& request, bool again) {
    Connect::Reply reply = channel_->Transact({request, again, interrupt_});
    reason_ = reply.reason;
    return std::move(reply.text);
  }

  Connect::IChannel* channel_ = nullptr;
  Platform::Clock* clock_ = nullptr;
  Platform::Interrupt* interrupt_ = nullptr;
  Connect::Reason reason_ = Connect::Reason::kNone;  // of the last exchange
  ResultCallback resultCallback_;
};

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_ABSTRACT_COMMAND_H_
