#include "error.h"

namespace NuvCtl {
namespace {

using nuv::Result;

struct ResultRow {
  Result result;
  const char* code;
  ExitCode exit;
  const char* hint;
};

constexpr char kSilentHint[] =
    "Check that the printer is on and that no other program is connected to it; a longer --timeout "
    "helps with one that is slow.";

constexpr ResultRow kRows[] = {
    {Result::kInvalidArgument, "usage", kUsage, "Run 'nuvctl --help' for the usage."},
    {Result::kBusy, "in_use", kLocalProblem, "This is a fault of nuvctl itself; please report it."},
    {Result::kNotFound, "no_printer", kNoPrinter,
     "Run 'nuvctl list' to see the printers in reach; the printer may be off, or no printer."},
    {Result::kUnreachable, "not_opened", kConnectionProblem,
     "Check that no other program is connected to it; switching the printer off and on helps when "
     "an earlier connection was cut. On USB its users need the right to use it, which the udev "
     "rule of NuvConnect5 gives (see the README)."},
    {Result::kNoAnswer, "no_answer", kConnectionProblem, kSilentHint},
    {Result::kTimeLimit, "no_answer", kConnectionProblem, kSilentHint},
    {Result::kLost, "connection_lost", kConnectionProblem,
     "Check the cable or network; a printer ends a connection also when another program opens "
     "one."},
    {Result::kUnreadable, "bad_reply", kPrinterFailed,
     "'nuvctl raw' shows a reply as the printer sends it."},
    {Result::kRefused, "refused", kPrinterFailed,
     "Run 'nuvctl status'; the printer may be busy, or the model does not know the command."},
    {Result::kCancelled, "cancelled", kCancelled, ""},
    {Result::kBadFile, "file_not_readable", kFileProblem,
     "Check the file, or export it from the slicing program again."},
    {Result::kNotFit, "not_fit", kNotFit, "--force sends it all the same."},
    {Result::kUnconfirmed, "not_confirmed", kConnectionProblem,
     "Look at the printer's panel, or run 'nuvctl status', before trying again."},
    {Result::kSystem, "system", kLocalProblem,
     "'nuvctl --debug' shows more; the print-file library NuvFile belongs beside nuvctl."},
};

}  // namespace

CommandError UsageError(const std::string& message, const std::string& hint) {
  return CommandError("usage", kUsage, message, hint);
}

CommandError FailureOf(const nuv::Error& error, const std::string& action) {
  // Of these the library says more than the table of results.
  const bool speaks = error.Reason() == Result::kInvalidArgument ||
                      error.Reason() == Result::kBadFile || error.Reason() == Result::kSystem ||
                      error.Reason() == Result::kNotFound;
  std::string message =
      action + " failed: " +
      (speaks ? error.what() : nuv_result_text(static_cast<nuv_result>(error.Reason())));
  if (error.Command() != 0) {
    message += " (printer command " + std::to_string(error.Command()) + ")";
  }
  CommandError failure("internal", kLocalProblem, message, "Please report it.");
  for (const ResultRow& row : kRows) {
    if (row.result != error.Reason()) continue;
    failure = CommandError(row.code, row.exit, message, row.hint);
  }
  if (error.Reason() == Result::kCancelled) failure.message = "Cancelled";
  failure.result = error.Reason();
  return failure;
}

void RequireOneLine(const std::string& text, const std::string& what) {
  // A zero byte would cut the text on its way into the library.
  if (!text.empty() && text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos) return;
  throw UsageError(what + " is empty or holds a line end",
                   "Give one line of text; in quotes when it holds blanks.");
}

}  // namespace NuvCtl
