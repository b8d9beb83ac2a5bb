#include "command/abstract_command.h"

namespace Nuv::Command {

TransactionStatus AbstractCommand::Execute() {
  result_.clear();
  const std::string request = BuildRequest();
  const std::string reply = channel_->ExecuteCommand(request);
  TransactionStatus status = ParseReply(reply);
  Recover(status, request);
  DeliverResult();
  return status;
}

void AbstractCommand::Recover(TransactionStatus& /*status*/, const std::string& /*request*/) {}

}  // namespace Nuv::Command
