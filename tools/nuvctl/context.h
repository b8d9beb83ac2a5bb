// What every subcommand gets to work with.
#ifndef NUVCTL_CONTEXT_H_
#define NUVCTL_CONTEXT_H_

#include <optional>
#include <string>
#include <vector>

#include "nuvprinter/nuvprinter.hpp"
#include "output.h"
#include "system.h"

namespace NuvCtl {

// Where printers are looked for, and which of them is meant.
struct Choice {
  bool usb = false;         // those on USB only
  int timeoutMs = 10000;    // wait for one printer's answers; the search takes 3 s of it at most
  std::optional<int> port;  // UDP port of the search; the library's own when not given
  // At most one of these.
  std::optional<std::string> serial;
  std::optional<std::string> address;
  std::optional<int> index;
  std::vector<std::string> printers;  // several for `send` only
  bool yes = false;                   // what would be asked has been answered
};

struct Context {
  const Choice& choice;
  Output& output;
  System& system;

  // The limits of one call of the library: --timeout, and Ctrl-C. After 2 s of waiting a line says
  // for whom. Not beyond the life of this.
  nuv::Call Call(const std::string& who) const;
  // The same without a limit and without a word: of transfers, and on threads.
  nuv::Call Endless() const;
};

}  // namespace NuvCtl

#endif  // NUVCTL_CONTEXT_H_
