#include "command/abstract_command.h"

#include <utility>

namespace Nuv::Command {

TransactionStatus AbstractCommand::Execute() {
  result_.clear();
  const std::string request = BuildRequest();
  TransactionStatus status = ParseReply(Ask(request, false));
  Recover(status, request);
  DeliverResult();
  return status;
}

std::string AbstractCommand::Ask(const std::string& request, bool again) {
  Connect::Reply reply = channel_->Transact({request, again, interrupt_});
  failure_ = reply.failure;
  return std::move(reply.text);
}

void AbstractCommand::Recover(TransactionStatus& /*status*/, const std::string& /*request*/) {}

}  // namespace Nuv::Command
