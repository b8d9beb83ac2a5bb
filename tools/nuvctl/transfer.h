// Sending a file through the library: checked before, shown and cancelled on the way, judged after.
#ifndef NUVCTL_TRANSFER_H_
#define NUVCTL_TRANSFER_H_

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "error.h"
#include "output.h"
#include "printer.h"
#include "system.h"

namespace NuvCtl {

// Checks that `file` (UTF-8, as the user gave it) can be read, before any printer is bothered, and
// returns its path.
std::wstring RequireFile(const std::string& file);

// Opens the printer that was chosen, checks that it is ready and says what will be sent.
Printer OpenReadyPrinter(const Choice& choice, Output& output, const std::string& file);

struct Transfer {
  int result = 0;          // what the library returned
  bool cancelled = false;  // the library was told to cancel; its result is then 0 all the same
  bool tooLate = false;    // Ctrl-C came when there was nothing left to cancel
  bool reported = false;   // the library reported progress at least once
  int total = 0;           // bytes, as last reported
  int sent = 0;
  int64_t elapsedMs = 0;
};

// Runs `send`, which sends through the library and returns its result, to its end: progress shown,
// Ctrl-C obeyed. One at a time.
Transfer RunTransfer(Output& output, System& system, const std::function<int()>& send);

// The failure of a transfer that the library ended with a result other than 0.
CommandError TransferFailure(const std::string& file, const Transfer& transfer);

// Throws unless the whole file went out. `cancel_hint`: what a cancel means for the printer, asked
// only when the transfer was cancelled.
void RequireSent(Output& output, const std::string& file, const Transfer& transfer,
                 std::string (*cancelHint)());

// File, bytes, seconds and `result` for scripts.
nlohmann::ordered_json TransferJson(const std::string& file, const Transfer& transfer,
                                    const std::string& result);

// "1.2 MB in 1:23"
std::string TransferText(const Transfer& transfer);

}  // namespace NuvCtl

#endif  // NUVCTL_TRANSFER_H_
