#include "file_job.h"

#include <filesystem>
#include <fstream>

#include "library.h"
#include "printer_state.h"
#include "text.h"

namespace nuvctl {
namespace {

CommandError FileError(const std::string& message, const std::string& hint) {
  return CommandError("file_not_readable", kFileProblem, message, hint);
}

}  // namespace

JobFile OpenJobFile(const std::string& name) {
  const std::optional<std::wstring> path = WideFromUtf8(name);
  if (!path) throw FileError("The file name is not UTF-8", "Rename the file, then try again.");
  const std::filesystem::path file = std::filesystem::u8path(name);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) {
    throw FileError("There is no file " + name, "Check the name and the folder.");
  }
  if (std::filesystem::is_directory(status)) {
    throw FileError(name + " is a folder", "Give the name of a file.");
  }
  if (!std::ifstream(file, std::ios::binary)) {
    throw FileError("The file " + name + " cannot be opened",
                    "Check that you may read it and that no other program holds it.");
  }
  return {name, *path};
}

void RequireReady() {
  const PrinterState state = ReadState();
  switch (state.number) {
    case NUV_PRINTER_PRINTING:
      throw CommandError("busy", kPrinterFailed, "The printer is printing, so nothing was sent",
                         "'nuvctl status' shows how long it takes; send again when it is idle.");
    case NUV_PRINTER_RECEIVING:
      throw CommandError(
          "busy", kPrinterFailed, "The printer is receiving another job, so nothing was sent",
          "Wait for it. When nobody sends, an unfinished job is still open: 'nuvctl raw "
          "\"F104 S2\"' abandons it.");
    case NUV_PRINTER_ERROR:
      throw CommandError("printer_error", kPrinterFailed,
                         "The printer reports error " + std::to_string(state.error_number) +
                             ", so nothing was sent",
                         "Clear the error at the printer, then send again.");
    default:
      return;
  }
}

Printer OpenReadyPrinter(const Context& context, const JobFile& file) {
  Printer printer = OpenPrinter(context);
  RequireReady();
  if (context.options.json) return printer;
  context.err << "Sending " << Printable(file.name) << " to "
              << Printable(printer.serial.empty() ? printer.address : printer.serial) << "\n"
              << std::flush;
  return printer;
}

CommandError TransferFailure(const JobFile& file, const Transfer& transfer) {
  CommandError error = FailureOf(transfer.result, "Sending " + file.name);
  error.shown.json = TransferJson(file, transfer, "failed");
  return error;
}

void RequireSent(const Context& context, const JobFile& file, const Transfer& transfer,
                 std::string (*cancel_hint)()) {
  if (transfer.result != NUV_OK) throw TransferFailure(file, transfer);
  if (transfer.cancelled) {
    Report shown;
    shown.json = TransferJson(file, transfer, "cancelled");
    throw CommandError("cancelled", kCancelled, "Cancelled after " + TransferText(transfer),
                       cancel_hint(), shown);
  }
  if (!transfer.reported) {
    throw CommandError("file_empty", kFileProblem,
                       "The file " + file.name + " holds nothing to send",
                       "Check the file, or export it again.");
  }
  if (transfer.sent != transfer.total) {
    throw CommandError("size_mismatch", kFileProblem,
                       "The file " + file.name + " announces " + std::to_string(transfer.total) +
                           " bytes, but " + std::to_string(transfer.sent) + " were sent",
                       "The file is damaged: cancel the job at the printer and export it again.");
  }
  if (transfer.too_late && !context.options.json) {
    context.err << "nuvctl: too late to cancel, everything had been sent\n";
  }
}

nlohmann::ordered_json TransferJson(const JobFile& file, const Transfer& transfer,
                                    const std::string& result) {
  return {{"file", file.name},
          {"result", result},
          {"bytes", transfer.sent},
          {"seconds", static_cast<double>(transfer.elapsed_ms) / 1000.0}};
}

std::string TransferText(const Transfer& transfer) {
  return FormatBytes(transfer.sent) + " in " + FormatDuration(transfer.elapsed_ms / 1000);
}

}  // namespace nuvctl
