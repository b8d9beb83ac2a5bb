// One transfer by the library, with its callbacks: progress shown, Ctrl-C obeyed.
#ifndef NUVCTL_TRANSFER_H_
#define NUVCTL_TRANSFER_H_

#include <cstdint>
#include <functional>

#include "context.h"
#include "nuvconnect/NuvConnect5.h"

namespace nuvctl {

// Sends through the library and returns its result.
using SendFunction = std::function<int()>;

struct Transfer {
  int result = 0;          // what the library returned
  bool cancelled = false;  // the library was told to cancel; its result is then 0 all the same
  bool too_late = false;   // Ctrl-C came when there was nothing left to cancel
  bool reported = false;   // the library reported progress at least once
  int total = 0;           // bytes, as last reported
  int sent = 0;
  int64_t elapsed_ms = 0;
};

// Runs `send` to its end. One at a time.
Transfer RunTransfer(const Context& context, const SendFunction& send);

}  // namespace nuvctl

#endif  // NUVCTL_TRANSFER_H_
