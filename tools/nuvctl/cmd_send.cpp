#include <CLI/CLI.hpp>
#include <exception>
#include <memory>

#include "file_job.h"
#include "job_check.h"
#include "library.h"
#include "print_watch.h"
#include "printer_state.h"
#include "stream.h"
#include "subcommands.h"
#include "text.h"
#include "watch_option.h"

namespace nuvctl {
namespace {

// The library orders the printer to drop a cancelled job; whether it did is asked here.
std::string HintAfterCancelledJob() {
  try {
    const int state = ReadState().number;
    if (state == NUV_PRINTER_IDLE) return "The printer dropped the job and is idle.";
    return "The printer's state is now: " + StateName(state) +
           ". Cancel the job at its panel if it does not become idle.";
  } catch (const std::exception&) {
    return "The printer does not tell its state; check at its panel that the job is gone.";
  }
}

Report RunSend(Context& context, const std::string& name) {
  const JobFile file = OpenJobFile(name);
  const Printer printer = OpenReadyPrinter(context, file);
  const JobMark before = ReadJobMark();
  Transfer transfer =
      RunTransfer(context, [&file] { return API_SendPrintFile(file.path.c_str(), nullptr); });
  if (transfer.result == NUV_PRINTER_REFUSED) throw JobRefused(TransferFailure(file, transfer));
  std::optional<int> job;
  if (IsCut(transfer)) {
    job = ConfirmCutJob(context, printer, before, transfer, TransferFailure(file, transfer));
    transfer.result = NUV_OK;
    transfer.sent = transfer.total;
    if (!context.options.json) {
      context.err << "nuvctl: the connection was lost, but the printer has everything\n";
    }
  }
  RequireSent(context, file, transfer, HintAfterCancelledJob);
  try {
    if (!job) job = ConfirmJob(context, printer, before, transfer.total);
  } catch (CommandError& error) {
    error.shown.json = TransferJson(file, transfer, "not_confirmed");
    throw;
  }
  Report report;
  report.json = TransferJson(file, transfer, "accepted");
  if (job) report.json["job_index"] = *job;
  report.text = "Sent " + Printable(name) + ": " + TransferText(transfer) + ". The printer " +
                (job ? "took it as job " + std::to_string(*job) : "is printing it") + ".\n";
  return report;
}

}  // namespace

Action DeclareSend(CLI::App& app) {
  const auto name = std::make_shared<std::string>();
  const auto watch = std::make_shared<bool>(false);
  app.add_flag("--watch", *watch, "Then follow the print until it ends");
  const auto interval_ms = DeclareInterval(app);
  app.add_option("FILE", *name, "The print file")->required()->type_name("");
  return [=](Context& context) {
    Report sent = RunSend(context, *name);
    if (!*watch) return sent;
    Stream(context, sent);
    WatchPrint(context, *interval_ms);
    return Report();
  };
}

}  // namespace nuvctl
