#include "transfer.h"

#include <filesystem>
#include <fstream>

#include "format.h"
#include "progress.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

using nuv::Finding;
using nuv::OutcomeKind;
using nuv::Result;

// What cannot be accepted.
constexpr auto kNotNow = static_cast<int32_t>(Finding::kPrinterNotIdle);
constexpr int32_t kNever = static_cast<int32_t>(Finding::kFileDamaged) |
                           static_cast<int32_t>(Finding::kImageWrongSize) | kNotNow;

CommandError FileError(const std::string& message, const std::string& hint) {
  return CommandError("file_not_readable", kFileProblem, message, hint);
}

ProgressStyle StyleFor(const Context& context) {
  if (context.output.TellsProgress()) return ProgressStyle::kFigures;
  if (context.output.Json()) return ProgressStyle::kSilent;
  return context.system.ErrorIsTerminal() ? ProgressStyle::kBar : ProgressStyle::kLines;
}

CommandError Unconfirmed(const nuv::Outcome& outcome) {
  const bool mayHaveAll = outcome.reason == Result::kUnconfirmed;
  return CommandError(mayHaveAll ? "job_unconfirmed" : "connection_lost", kConnectionProblem,
                      outcome.message,
                      "Look at the printer's panel, or run 'nuvctl status', before sending again.");
}

CommandError FailureOf(const nuv::Outcome& outcome) {
  switch (outcome.kind) {
    case OutcomeKind::kNotFit:
      return NotFit(outcome.message, outcome.findings);
    case OutcomeKind::kRefused:
      return CommandError("job_refused", kPrinterFailed, outcome.message,
                          "Run 'nuvctl status', and look at the printer's panel.");
    case OutcomeKind::kUnconfirmed:
      return Unconfirmed(outcome);
    default:
      break;
  }
  if (outcome.reason == Result::kBadFile) {
    return FileError(outcome.message, "Check the file, or export it again.");
  }
  return CommandError("cancelled", kCancelled, outcome.message, "");
}

std::string ResultWord(OutcomeKind kind) {
  switch (kind) {
    case OutcomeKind::kNotFit:
      return "not_fit";
    case OutcomeKind::kRefused:
      return "refused";
    case OutcomeKind::kUnconfirmed:
      return "not_confirmed";
    default:
      return "cancelled";
  }
}

}  // namespace

void RequireFile(const std::string& file) {
  if (!IsUtf8(file)) {
    throw FileError("The file name is not UTF-8", "Rename the file, then try again.");
  }
  const std::filesystem::path native = std::filesystem::u8path(file);
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(native, error);
  if (!std::filesystem::exists(status)) {
    throw FileError("There is no file " + file, "Check the name and the folder.");
  }
  if (std::filesystem::is_directory(status)) {
    throw FileError(file + " is a folder", "Give the name of a file.");
  }
  if (!std::ifstream(native, std::ios::binary)) {
    throw FileError("The file " + file + " cannot be opened",
                    "Check that you may read it and that no other program holds it.");
  }
}

Transfer RunTransfer(const Context& context, const std::string& file, bool force, const Send& send,
                     const std::function<bool()>& begins) {
  ProgressView view(StyleFor(context), context.output.Err(), context.system);
  int64_t total = 0;
  bool hasBegun = false;
  nuv::SendOptions options;
  if (force) options.accept = nuv::Findings(-1);
  options.progress = [&](const nuv::Progress& progress) {
    if (progress.stage == nuv::Stage::kChecking) return true;
    if (!std::exchange(hasBegun, true) && begins && !begins()) return false;
    total = progress.total;
    if (progress.stage >= nuv::Stage::kSending) view.Update(progress.total, progress.sent);
    return true;
  };
  try {
    nuv::Outcome outcome =
        Asked("Sending " + file, [&] { return send(options, context.Endless()); });
    view.Finish();
    if (force) outcome.findings.bits &= kNever;
    return {std::move(outcome), total, view.ElapsedMs()};
  } catch (...) {
    view.Finish();
    throw;
  }
}

CommandError NotFit(const std::string& message, nuv::Findings findings) {
  if (findings.Has(Finding::kFileDamaged)) {
    return CommandError("file_damaged", kFileProblem, message, "Export the file again.");
  }
  if (findings.bits == kNotNow) {
    return CommandError("busy", kPrinterFailed, message + ", so nothing was sent",
                        "'nuvctl status' shows what it does. One that receives although nobody "
                        "sends is freed by 'nuvctl cancel'.");
  }
  return CommandError(
      "not_fit", kNotFit, message + ", so nothing was sent",
      (findings.bits & kNever) != 0 ? "" : "When you know better, --force sends it all the same.");
}

void RequireSent(const std::string& file, const Transfer& transfer, const std::string& held) {
  if (transfer.outcome) return;
  CommandError error = FailureOf(transfer.outcome);
  if (transfer.outcome.mayHoldJob) error.hint = held;
  error.shown.json = TransferJson(file, transfer, ResultWord(transfer.outcome.kind));
  error.result = transfer.outcome.reason;
  throw error;
}

nlohmann::ordered_json TransferJson(const std::string& file, const Transfer& transfer,
                                    const std::string& result) {
  return {{"file", file},
          {"result", result},
          {"bytes", transfer.outcome.bytesSent},
          {"seconds", static_cast<double>(transfer.elapsedMs) / 1000.0}};
}

std::string TransferText(const Transfer& transfer) {
  return FormatBytes(transfer.outcome.bytesSent) + " in " +
         FormatDuration(transfer.elapsedMs / 1000);
}

}  // namespace NuvCtl
