#ifndef NUV_CONNECT_QUERY_H_
#define NUV_CONNECT_QUERY_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "command/general_command_proc.h"
#include "job/job_context.h"

namespace Nuv::Connect {

// One command transaction on behalf of an operation of the framework. A failure is reported to the
// host's error-code callback once, with the operation's result.
//
// Thread-safety: none; lives on the stack of one call. The channel serialises the transactions.
class Query {
 public:
  // All three outlive the query.
  Query(IConnect& channel, Platform::Clock& clock, const HostCallbacks& callbacks)
      : channel_(channel), clock_(clock), callbacks_(callbacks) {}

  // Runs command `code` with `parameters`, in wire order. 0, 1 the transaction failed or no such
  // command, 29 the printer refused.
  int32_t Run(int32_t code, std::vector<std::string> parameters = {});

  // As Run, but leaves it to the caller to report a refusal.
  int32_t RunQuietOnRefusal(int32_t code);

  // Reports `result` to the host and returns it.
  int32_t Fail(int32_t result) const;

  // Fields of the reply by key: 0 or empty when it lacked them. Number throws what ParseDecimal
  // throws.
  int32_t Number(const char* key) const { return proc_->GetIntValue(key); }
  std::string Text(const char* key) const { return proc_->GetStringValue(key); }
  bool Has(const char* key) const { return Fields().count(key) != 0; }
  const Command::ResultMap& Fields() const;

  // The values of the reply in its order.
  const std::vector<std::string>& values() const { return values_; }

 private:
  int32_t Process(int32_t code, std::vector<std::string> parameters);

  IConnect& channel_;
  Platform::Clock& clock_;
  const HostCallbacks& callbacks_;
  int32_t code_ = 0;
  std::unique_ptr<GeneralCommandProc> proc_;
  std::vector<std::string> values_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_QUERY_H_
