// Prints that are followed until they end.
#ifndef NUVCTL_WATCHING_H_
#define NUVCTL_WATCHING_H_

#include <string>

#include "context.h"
#include "target.h"

namespace NuvCtl {

struct WatchOptions {
  int intervalMs = 1000;
  int giveUpMinutes = 60;  // without an answer
  std::string then;        // a command for the end; empty: none
};

constexpr int kShortestIntervalMs = 1000;

// Shows what changes: one row written over on a terminal, else a line or document per change. Ends
// when the printer neither prints nor receives, and tells how the print ended. Throws CommandError
// when it was cancelled, failed, the printer reports an error, or says nothing for too long.
void WatchPrint(const Context& context, Target& target, const WatchOptions& options);

// The same of all printers, until none prints or receives any more; throws CommandError when one
// print did not end well, or a printer could not be reached.
void WatchAll(const Context& context, const WatchOptions& options);

}  // namespace NuvCtl

#endif  // NUVCTL_WATCHING_H_
