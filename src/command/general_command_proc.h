#ifndef NUV_COMMAND_GENERAL_COMMAND_PROC_H_
#define NUV_COMMAND_GENERAL_COMMAND_PROC_H_

#include <memory>
#include <string>
#include <vector>

#include "command/abstract_command.h"
#include "command/i_fcmd_proc.h"

namespace Nuv::Connect {

// Runs any command that it is handed, and keeps the keyed fields of the reply for look-up.
class GeneralCommandProc final : public IFcmdProc {
 public:
  // `errorCallback` may be empty.
  explicit GeneralCommandProc(std::unique_ptr<Command::AbstractCommand> command,
                              ErrorCallback errorCallback = {});

  // 0 accepted, 1 the transaction failed, 29 the printer refused. After a refusal the output and
  // the look-ups still have what the reply carried.
  int32_t Process(std::vector<std::string>& output) override;

  int32_t GetCode() const { return command_->GetCode(); }

  // The value of `key`, empty when the reply lacked it.
  std::string GetStringValue(const std::string& key) const;

  // The number that the value of `key` begins with, 0 when the reply lacked it.
  // Throws what ParseDecimal throws.
  int32_t GetIntValue(const std::string& key) const;

  const Command::ResultMap& result() const { return command_->result(); }

 private:
  std::unique_ptr<Command::AbstractCommand> command_;
  ErrorCallback errorCallback_;
};

}  // namespace Nuv::Connect

#endif  // NUV_COMMAND_GENERAL_COMMAND_PROC_H_
