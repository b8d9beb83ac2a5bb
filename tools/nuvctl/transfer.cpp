#include "transfer.h"

#include <filesystem>
#include <fstream>

#include "format.h"
#include "library.h"
#include "progress.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

CommandError FileError(const std::string& message, const std::string& hint) {
  return CommandError("file_not_readable", kFileProblem, message, hint);
}

ProgressStyle StyleFor(Output& output, System& system) {
  if (output.Json()) return ProgressStyle::kSilent;
  return system.ErrorIsTerminal() ? ProgressStyle::kBar : ProgressStyle::kLines;
}

// While it lives, the library's send callbacks lead here and Ctrl-C cancels instead of killing.
// The callbacks carry no argument of the host's, hence the one active session.
class Session {
 public:
  Session(Output& output, System& system)
      : system_(system), view_(StyleFor(output, system), output.Err(), system) {
    active_ = this;
    API_RegisterSendDataStartCallback([] { active_->view_.Start(); });
    API_RegisterSendDataUpdateCallback([](int total, int sent) { active_->Update(total, sent); });
    API_RegisterSendDataCancelCallback([] { return active_->Cancel(); });
    system_.WatchInterrupts(true);
  }

  ~Session() {
    API_RegisterSendDataStartCallback(nullptr);
    API_RegisterSendDataUpdateCallback(nullptr);
    API_RegisterSendDataCancelCallback(nullptr);
    system_.WatchInterrupts(false);
    view_.Finish();
    active_ = nullptr;
  }

  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Transfer Run(const std::function<int()>& send) {
    transfer_.result = send();
    transfer_.elapsedMs = view_.ElapsedMs();
    transfer_.tooLate = system_.Interrupted() && !transfer_.cancelled;
    return transfer_;
  }

 private:
  void Update(int total, int sent) {
    transfer_.reported = true;
    transfer_.total = total;
    transfer_.sent = sent;
    view_.Update(total, sent);
  }

  bool Cancel() {
    if (system_.Interrupted()) transfer_.cancelled = true;
    return transfer_.cancelled;
  }

  static Session* active_;

  System& system_;
  ProgressView view_;
  Transfer transfer_;
};

Session* Session::active_ = nullptr;

}  // namespace

std::wstring RequireFile(const std::string& file) {
  const std::optional<std::wstring> path = WideFromUtf8(file);
  if (!path) throw FileError("The file name is not UTF-8", "Rename the file, then try again.");
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
  return *path;
}

Printer OpenReadyPrinter(const Choice& choice, Output& output, const std::string& file) {
  Printer printer = OpenPrinter(choice);
  RequireReady();
  output.Remark("Sending " + Printable(file) + " to " + Printable(printer.Name()));
  return printer;
}

Transfer RunTransfer(Output& output, System& system, const std::function<int()>& send) {
  Session session(output, system);
  return session.Run(send);
}

CommandError TransferFailure(const std::string& file, const Transfer& transfer) {
  CommandError error = FailureOf(transfer.result, "Sending " + file);
  error.shown.json = TransferJson(file, transfer, "failed");
  return error;
}

void RequireSent(Output& output, const std::string& file, const Transfer& transfer,
                 std::string (*cancelHint)()) {
  if (transfer.result != NUV_OK) throw TransferFailure(file, transfer);
  if (transfer.cancelled) {
    Report shown;
    shown.json = TransferJson(file, transfer, "cancelled");
    throw CommandError("cancelled", kCancelled, "Cancelled after " + TransferText(transfer),
                       cancelHint(), shown);
  }
  if (!transfer.reported) {
    throw CommandError("file_empty", kFileProblem, "The file " + file + " holds nothing to send",
                       "Check the file, or export it again.");
  }
  if (transfer.sent != transfer.total) {
    throw CommandError("size_mismatch", kFileProblem,
                       "The file " + file + " announces " + std::to_string(transfer.total) +
                           " bytes, but " + std::to_string(transfer.sent) + " were sent",
                       "The file is damaged: cancel the job at the printer and export it again.");
  }
  if (transfer.tooLate) output.Remark("nuvctl: too late to cancel, everything had been sent");
}

nlohmann::ordered_json TransferJson(const std::string& file, const Transfer& transfer,
                                    const std::string& result) {
  return {{"file", file},
          {"result", result},
          {"bytes", transfer.sent},
          {"seconds", static_cast<double>(transfer.elapsedMs) / 1000.0}};
}

std::string TransferText(const Transfer& transfer) {
  return FormatBytes(transfer.sent) + " in " + FormatDuration(transfer.elapsedMs / 1000);
}

}  // namespace NuvCtl
