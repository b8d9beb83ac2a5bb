#include "error.h"

#include "nuvconnect/ResultCodes.h"

namespace NuvCtl {
namespace {

struct ResultRow {
  int result;
  const char* code;
  ExitCode exit;
  const char* message;
  const char* hint;
};

constexpr ResultRow kRows[] = {
    {NUV_NO_INSTANCE, "not_started", kLocalProblem, "the connection library is not started",
     "This is a fault of nuvctl itself; please report it."},
    {NUV_FAILED, "no_answer", kConnectionProblem, "the printer did not answer, or not as expected",
     "Check that the printer is on and that no other program is connected to it. One that is busy, "
     "or whose buffer is stuck, takes no data in time: wait until it is idle, or switch it off and "
     "on."},
    {NUV_NOT_FOUND, "not_found", kNoPrinter, "no such printer was found",
     "Run 'nuvctl list' to see the printers in reach."},
    {NUV_CONNECTION_REFUSED, "not_opened", kConnectionProblem, "the printer could not be opened",
     "Check that no other program is connected to it; switching the printer off and on helps when "
     "an earlier connection was cut."},
    {NUV_FILE_NOT_READABLE, "file_not_readable", kFileProblem,
     "the file cannot be opened or is damaged",
     "Check the file, or export it from the slicing program again."},
    {NUV_RESIN_EMPTY, "resin_empty", kPrinterFailed, "too little resin is left",
     "Fill up or change the resin."},
    {NUV_RESIN_EXPIRED, "resin_expired", kPrinterFailed, "the resin is past its date of use",
     "Put in fresh resin."},
    {NUV_RESIN_NO_CARTRIDGE, "resin_missing", kPrinterFailed,
     "no resin cartridge or tank is in place", "Put one in and try again."},
    {NUV_RESIN_TAG_UNREADABLE, "resin_tag_unreadable", kPrinterFailed,
     "the tag of the resin cannot be read", "Take the cartridge or tank out and put it in again."},
    {NUV_RESIN_WRONG_TYPE, "resin_wrong_type", kPrinterFailed,
     "the resin is not made for this printer", "Put in a resin for this model."},
    {NUV_NO_BUFFER_SPACE, "no_buffer_space", kPrinterFailed,
     "the printer has no free buffer, or was lost while it had none",
     "Run 'nuvctl status'; when the printer does not answer, check its connection."},
    {NUV_WRITE_FAILED, "write_failed", kConnectionProblem,
     "the connection was lost, or the printer took no data in time",
     "Check the cable or network; a printer that is busy, or whose buffer is stuck, takes no data "
     "either."},
    {NUV_NO_JOB_SENDER, "wrong_machine", kFileProblem,
     "the file is made for a machine that cannot be sent to",
     "Export the file for the model of this printer."},
    {NUV_NOT_PRINTING, "not_printing", kPrinterFailed, "the printer is not printing",
     "Run 'nuvctl status' to see what it does."},
    {NUV_NUVFILE_MISSING, "nuvfile_missing", kLocalProblem,
     "the print-file library NuvFile cannot be loaded",
     "Install NuvFile beside NuvConnect5; 'nuvctl --debug' shows where it is looked for."},
    {NUV_PRINTER_REFUSED, "refused", kPrinterFailed, "the printer refused",
     "Run 'nuvctl status'; the printer may be busy, or the model does not know the command."},
};

const ResultRow* FindRow(int result) {
  for (const ResultRow& row : kRows) {
    if (row.result == result) return &row;
  }
  return nullptr;
}

}  // namespace

CommandError ResultError(int result, const std::string& action, int command) {
  const ResultRow* const row = FindRow(result);
  const std::string message = FailureMessage(action, ReasonOf(result), command);
  CommandError error = row != nullptr
                           ? CommandError(row->code, row->exit, message, row->hint)
                           : CommandError("unknown_result", kPrinterFailed, message,
                                          "Run the command again with --debug for diagnostics.");
  error.result = result;
  return error;
}

std::string FailureMessage(const std::string& action, const std::string& reason, int command) {
  return action + " failed: " + reason +
         (command == 0 ? std::string() : " (printer command " + std::to_string(command) + ")");
}

std::string ReasonOf(int result) {
  const ResultRow* const row = FindRow(result);
  return row != nullptr ? row->message : "unknown result " + std::to_string(result);
}

void RequireOneLine(const std::string& text, const std::string& what) {
  // A zero byte would cut the text on its way into the library.
  if (!text.empty() && text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos) return;
  throw CommandError("usage", kUsage, what + " is empty or holds a line end",
                     "Give one line of text; in quotes when it holds blanks.");
}

}  // namespace NuvCtl
