#include "command/general_command_proc.h"

#include "command/decimal.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {

GeneralCommandProc::GeneralCommandProc(std::unique_ptr<Command::AbstractCommand> command,
                                       ErrorCallback errorCallback)
    : command_(std::move(command)), errorCallback_(std::move(errorCallback)) {}

int32_t GeneralCommandProc::Process(std::vector<std::string>& output) {
  output.clear();
  bool accepted = false;
  command_->set_result_callback(
      [&](int32_t /*code*/, int32_t /*replyCode*/, bool ok, std::vector<std::string> values) {
        accepted = ok;
        output = std::move(values);
      });
  const Command::TransactionStatus status = command_->Execute();
  const int32_t code = command_->GetCode();
  if (status != Command::kReplied) {
    if (errorCallback_) errorCallback_(static_cast<ConnectError>(status), code);
    return NUV_FAILED;
  }
  if (accepted) return NUV_OK;
  if (errorCallback_) errorCallback_(kErrorRefused, code);
  return NUV_PRINTER_REFUSED;
}

std::string GeneralCommandProc::GetStringValue(const std::string& key) const {
  const auto field = result().find(key);
  return field == result().end() ? std::string() : field->second;
}

int32_t GeneralCommandProc::GetIntValue(const std::string& key) const {
  const std::string text = GetStringValue(key);
  return text.empty() ? 0 : Command::ParseDecimal(text, GetCode());
}

}  // namespace Nuv::Connect
