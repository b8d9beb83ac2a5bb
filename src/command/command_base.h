#ifndef NUV_COMMAND_COMMAND_BASE_H_
#define NUV_COMMAND_COMMAND_BASE_H_

#include <string>
#include <vector>

#include "command/abstract_command.h"
#include "command/catalogue.h"

namespace Nuv::Command {

// The common form of a command; the classes of commands.h differ from it by their catalogue row
// and, where a row cannot say it, by an override.
class CommandBase : public AbstractCommand {
 public:
  explicit CommandBase(int code) : code_(code) {}

  // Whether the request was sent more than once.
  bool SentAgain() const { return resends_ > 0; }

  // Request parameters, in wire order.
  void SetParameters(std::vector<std::string> parameters) { parameters_ = std::move(parameters); }

  // Refuses, with a diagnostic and -1, parameters that would break the request line; nothing is
  // sent then.
  TransactionStatus Execute() override;

  int GetCode() const override { return code_; }

  // At most two resends after too short a reply, at most two further reads after a foreign one,
  // each after a pause of 1000 ms; ends with the first good reply, and when the wait was given up.
  void Recover(TransactionStatus& status, const std::string& request) override;

  // "F", the code, one parameter behind " S" if there is exactly one, CR LF.
  std::string BuildRequest() const override;

  TransactionStatus ParseReply(const std::string& reply) override;
  std::vector<std::string> GetReplyValues() const override;
  void DeliverResult() override;

  // True when the printer accepted the command: the second token is "OK".
  virtual bool IsReplyOk(const std::vector<std::string>& tokens) const;

  // The keys of the reply: of each token that holds ":", the text before it.
  virtual std::vector<std::string> GetReplyKeys() const;

  // The named record of the reply; empty for a command that has none.
  virtual ResultMap GetResultMap() const;

 protected:
  // False when the wait was interrupted.
  bool Pause();

  std::vector<std::string> parameters_;
  std::vector<std::string> replyTokens_;
  int code_;
  int replyCode_ = 0;
  bool replyOk_ = false;
  int resends_ = 0;
};

// A command that behaves as its catalogue row says.
class TableCommand : public CommandBase {
 public:
  std::string BuildRequest() const override;
  std::vector<std::string> GetReplyValues() const override;
  bool IsReplyOk(const std::vector<std::string>& tokens) const override;
  std::vector<std::string> GetReplyKeys() const override;
  ResultMap GetResultMap() const override;

 protected:
  explicit TableCommand(const CommandRow& row) : CommandBase(row.code), row_(row) {}

  // "F" and the code, without the line end.
  std::string RequestHead() const { return "F" + std::to_string(row_.code); }

 private:
  const CommandRow& row_;
};

// Base of the class of one code.
template <int Code>
class CatalogueCommand : public TableCommand {
  static constexpr size_t kPlace = RowPlace(Code);
  static_assert(kPlace < std::size(kRows), "a command class needs its row in the catalogue");

 public:
  static constexpr int kCode = Code;
  CatalogueCommand() : TableCommand(kRows[kPlace]) {}
};

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_COMMAND_BASE_H_
