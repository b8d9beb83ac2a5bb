// Exit codes, and failures as they are told to the user: what happened and what to do next.
#ifndef NUVCTL_ERROR_H_
#define NUVCTL_ERROR_H_

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "nuvprinter/nuvprinter.hpp"
#include "output.h"

namespace NuvCtl {

// Documented in --help and README.md; scripts rely on the numbers.
enum ExitCode : int {
  kDone = 0,
  kPrinterFailed = 1,      // the printer refused, failed or did not take the job
  kUsage = 2,              // the command line is wrong
  kNoPrinter = 3,          // no printer found, or it is not clear which one
  kFileProblem = 4,        // the file cannot be read or is damaged
  kConnectionProblem = 5,  // the printer did not answer or could not be opened
  kLocalProblem = 6,       // this computer's side: a library is missing, output not written
  kSomeFailed = 7,         // of several printers
  kNotFit = 8,             // the file is not for this printer, or not now
  kCancelled = 130         // Ctrl-C
};

// Ends a subcommand. `code` is a stable word for scripts, `message` one sentence without a full
// stop, `hint` what to do next (may be empty), `shown` what was found out all the same.
struct CommandError : std::exception {
  CommandError(std::string word, ExitCode exitCode, std::string sentence, std::string nextStep,
               Report found = Report())
      : code(std::move(word)),
        exit(exitCode),
        message(std::move(sentence)),
        hint(std::move(nextStep)),
        shown(std::move(found)) {}

  const char* what() const noexcept override { return message.c_str(); }

  std::string code;
  ExitCode exit;
  std::string message;
  std::string hint;
  Report shown;
  bool shownIsResult = false;         // `shown` is what was asked for, so it is no error's
  std::optional<nuv::Result> result;  // of the library call that failed, if one did
};

CommandError UsageError(const std::string& message, const std::string& hint);

// The failure of a library call while doing `action`, such as "Reading the state".
CommandError FailureOf(const nuv::Error& error, const std::string& action);

// Runs `ask`, calls of the library while doing `action`; throws CommandError when one fails.
template <class Ask>
auto Asked(const std::string& action, Ask ask) {
  try {
    return ask();
  } catch (const nuv::Error& error) {
    throw FailureOf(error, action);
  }
}

// Throws a usage error unless `text` can be a part of one printer command: not empty, no line end
// inside. `what`: "The nickname"; `text` itself is not told, because it may be a secret.
void RequireOneLine(const std::string& text, const std::string& what);

}  // namespace NuvCtl

#endif  // NUVCTL_ERROR_H_
