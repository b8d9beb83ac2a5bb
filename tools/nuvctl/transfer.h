// Sending a file through the library: shown and cancelled on the way, judged after.
#ifndef NUVCTL_TRANSFER_H_
#define NUVCTL_TRANSFER_H_

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "context.h"
#include "error.h"

namespace NuvCtl {

// Throws CommandError unless `file` (UTF-8, as the user gave it) can be opened, before any printer
// is bothered.
void RequireFile(const std::string& file);

struct Transfer {
  nuv::Outcome outcome;
  int64_t total = 0;  // bytes
  int64_t elapsedMs = 0;
};

using Send = std::function<nuv::Outcome(const nuv::SendOptions& options, const nuv::Call& call)>;

// Runs `send` to its end, progress shown, Ctrl-C obeyed. `force`: what speaks against the file has
// been accepted. `begins`: asked before anything is sent; false cancels. Throws CommandError when
// nothing was sent for a reason that is no outcome.
Transfer RunTransfer(const Context& context, const std::string& file, bool force, const Send& send,
                     const std::function<bool()>& begins = nullptr);

// Throws unless all went out and the printer has not said that it lacks something. `held`: what is
// told where the printer may wait for the rest.
void RequireSent(const std::string& file, const Transfer& transfer, const std::string& held);

// The failure of a file that is not fit: damaged, for another printer, or not now.
CommandError NotFit(const std::string& message, nuv::Findings findings);

// File, bytes, seconds and `result` for scripts.
nlohmann::ordered_json TransferJson(const std::string& file, const Transfer& transfer,
                                    const std::string& result);

// "1.2 MB in 1:23"
std::string TransferText(const Transfer& transfer);

}  // namespace NuvCtl

#endif  // NUVCTL_TRANSFER_H_
