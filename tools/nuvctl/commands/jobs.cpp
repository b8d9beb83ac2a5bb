#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <stdexcept>

#include "commands/commands.h"
#include "error.h"
#include "library.h"
#include "printer.h"
#include "progress.h"
#include "transfer.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

// The last lines may still be in the printer's receive buffer when the transfer ends.
constexpr int kConfirmAttempts = 10;

constexpr char kUnfinishedHint[] =
    "A printer keeps an unfinished job open (receiving) and takes no other: 'nuvctl raw "
    "\"F104 S2\"' abandons it.";

CommandError NotTaken(
    const std::string& reason,
    const std::string& hint = "Look at the printer's panel, then send the file again.") {
  return CommandError("job_not_taken", kPrinterFailed,
                      "The printer did not take the job: " + reason, hint);
}

CommandError Unconfirmed(const CommandError& cause) {
  CommandError error(
      "job_unconfirmed", cause.exit,
      "Everything was sent, but whether the printer took the job is not known: " + cause.message,
      "Look at the printer's panel, or run 'nuvctl status', before sending again.");
  error.result = cause.result;
  return error;
}

bool HasAll(const JobMark& before, const JobMark& after, int total) {
  return after.known && after.index != before.index && after.bytes == total;
}

std::optional<int> ConfirmByMark(System& system, const JobMark& before, JobMark after, int total) {
  const auto taken = [&] {
    after = ReadJobMark();
    return HasAll(before, after, total);
  };
  if (WaitFor(system, kConfirmAttempts, taken)) return after.index;
  if (after.index == before.index) {
    throw NotTaken("its last job is still number " + std::to_string(before.index));
  }
  throw NotTaken("its job " + std::to_string(after.index) + " holds " +
                     std::to_string(after.bytes) + " of " + std::to_string(total) + " bytes",
                 kUnfinishedHint);
}

void ConfirmByState(System& system) {
  int state = 0;
  const auto printing = [&] {
    state = ReadState().number;
    return state == NUV_PRINTER_PRINTING;
  };
  if (!WaitFor(system, kConfirmAttempts, printing)) {
    throw NotTaken("it keeps no count of jobs, and its state is " + StateName(state));
  }
}

// Waits a few seconds until the printer shows a job other than `before` with exactly `total` bytes,
// and returns its index; for models that refuse the query until it prints, and returns nothing. A
// printer that does not answer is opened anew once. Throws CommandError saying that the printer did
// not take the job, or that this is not known.
std::optional<int> ConfirmJob(const Context& context, const Printer& printer, const JobMark& before,
                              int total) {
  std::optional<CommandError> unanswered;
  while (true) {
    try {
      if (unanswered) ReopenPrinter(context.choice, context.system, printer);
      const JobMark after = before.known ? ReadJobMark() : JobMark();
      if (after.known) return ConfirmByMark(context.system, before, after, total);
      ConfirmByState(context.system);
      return std::nullopt;
    } catch (const CommandError& error) {
      if (error.code == "job_not_taken") throw;
      // A printer may close the connection behind the last byte.
      if (unanswered) throw Unconfirmed(*unanswered);
      if (error.exit != kConnectionProblem) throw Unconfirmed(error);
      unanswered = error;
    } catch (const std::logic_error& error) {
      throw Unconfirmed(
          CommandError("bad_reply", kPrinterFailed,
                       std::string("its reply cannot be understood (") + error.what() + ")", ""));
    }
  }
}

// Whether the connection was lost within the job, so that the printer may have all of it or a part.
bool IsCut(const Transfer& transfer) {
  return !transfer.cancelled &&
         (transfer.result == NUV_NO_BUFFER_SPACE || transfer.result == NUV_WRITE_FAILED);
}

// Connects to the printer again after a cut, and waits a few seconds until it shows a job other
// than `before` with all bytes; returns its index. Throws `failure`, with what the printer has and
// what is left to do, when it does not.
int ConfirmCutJob(const Context& context, const Printer& printer, const JobMark& before,
                  const Transfer& transfer, CommandError failure) {
  JobMark after;
  const auto taken = [&] {
    after = ReadJobMark();
    return transfer.reported && HasAll(before, after, transfer.total);
  };
  try {
    // Without the count from before, a job of equal size would be taken for this one.
    if (before.known) {
      ReopenPrinter(context.choice, context.system, printer);
      if (WaitFor(context.system, kConfirmAttempts, taken)) return after.index;
    }
  } catch (const std::exception&) {
    after = JobMark();  // what the printer has cannot be found out
  }
  if (after.known && after.index == before.index) {
    failure.message += "; the printer has nothing of the job";
    throw failure;
  }
  if (after.known) {
    failure.message += "; the printer has " + std::to_string(after.bytes) +
                       (transfer.reported ? " of " + std::to_string(transfer.total) : "") +
                       " bytes of it, as job " + std::to_string(after.index);
  } else if (transfer.reported && transfer.sent == transfer.total) {
    CommandError unconfirmed = Unconfirmed(failure);
    unconfirmed.shown = failure.shown;
    unconfirmed.shown.json["result"] = "not_confirmed";
    failure = unconfirmed;
  }
  failure.hint += std::string(" ") + kUnfinishedHint;
  throw failure;
}

// The failure of a job that the printer refused to open.
CommandError JobRefused(CommandError failure) {
  failure.code = "job_refused";
  failure.message = "The printer refused to open the job";
  failure.hint =
      "It prints, or an unfinished job is still open on it. When 'nuvctl status' says receiving "
      "although nobody sends, 'nuvctl raw \"F104 S2\"' abandons it.";
  return failure;
}

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

Report RunSend(Context& context, const std::string& file) {
  const std::wstring path = RequireFile(file);
  const Printer printer = OpenReadyPrinter(context.choice, context.output, file);
  const JobMark before = ReadJobMark();
  Transfer transfer = RunTransfer(context.output, context.system,
                                  [&path] { return API_SendPrintFile(path.c_str(), nullptr); });
  if (transfer.result == NUV_PRINTER_REFUSED) throw JobRefused(TransferFailure(file, transfer));
  std::optional<int> job;
  if (IsCut(transfer)) {
    job = ConfirmCutJob(context, printer, before, transfer, TransferFailure(file, transfer));
    transfer.result = NUV_OK;
    transfer.sent = transfer.total;
    context.output.Remark("nuvctl: the connection was lost, but the printer has everything");
  }
  RequireSent(context.output, file, transfer, HintAfterCancelledJob);
  try {
    if (!job) job = ConfirmJob(context, printer, before, transfer.total);
  } catch (CommandError& error) {
    error.shown.json = TransferJson(file, transfer, "not_confirmed");
    throw;
  }
  Report report;
  report.json = TransferJson(file, transfer, "accepted");
  if (job) report.json["job_index"] = *job;
  report.text = "Sent " + Printable(file) + ": " + TransferText(transfer) + ". The printer " +
                (job ? "took it as job " + std::to_string(*job) : "is printing it") + ".\n";
  return report;
}

Report RunGcode(Context& context, const std::string& file) {
  const std::wstring path = RequireFile(file);
  OpenReadyPrinter(context.choice, context.output, file);
  const Transfer transfer = RunTransfer(
      context.output, context.system, [&path] { return API_SendGCodeFile(path.c_str(), nullptr); });
  RequireSent(context.output, file, transfer, [] {
    return std::string("The commands sent until then stay in effect; check the printer.");
  });
  Report report;
  // Printers confirm command text in no way, so there is nothing to check and nothing to promise.
  report.json = TransferJson(file, transfer, "sent");
  report.text = "Sent " + Printable(file) + ": " + TransferText(transfer) +
                ". The printer does not confirm command files.\n";
  return report;
}

// Adds --interval to `app`; the value is there after parsing.
std::shared_ptr<int> DeclareInterval(CLI::App& app) {
  constexpr int kLongestMs = 3600000;
  auto intervalMs = std::make_shared<int>(kShortestIntervalMs);
  app.add_option("--interval", *intervalMs, "Milliseconds from look to look")
      ->type_name("MS")
      ->check(CLI::Range(kShortestIntervalMs, kLongestMs).description(""))
      ->capture_default_str();
  return intervalMs;
}

Action DeclareSend(CLI::App& app) {
  const auto file = std::make_shared<std::string>();
  const auto watch = std::make_shared<bool>(false);
  app.add_flag("--watch", *watch, "Then follow the print until it ends");
  const auto intervalMs = DeclareInterval(app);
  app.add_option("FILE", *file, "The print file")->required()->type_name("");
  return [=](Context& context) {
    Report sent = RunSend(context, *file);
    if (!*watch) return sent;
    context.output.Stream(sent);
    WatchPrint(context.output, context.system, *intervalMs);
    return Report();
  };
}

Action DeclareGcode(CLI::App& app) {
  const auto file = std::make_shared<std::string>();
  app.add_option("FILE", *file, "A text file, one printer command a line")
      ->required()
      ->type_name("");
  return [file](Context& context) { return RunGcode(context, *file); };
}

Action DeclareWatch(CLI::App& app) {
  const auto intervalMs = DeclareInterval(app);
  return [intervalMs](Context& context) {
    OpenPrinter(context.choice);
    WatchPrint(context.output, context.system, *intervalMs);
    return Report();
  };
}

}  // namespace

Subcommands JobCommands() {
  return {
      {"send", "Send a print file and make sure that the printer took it",
       "nuvctl send crown.nuv --address 192.168.0.20", DeclareSend},
      {"watch", "Follow a print until it ends", "nuvctl watch --interval 5000", DeclareWatch},
      {"gcode", "Send a text file of printer commands", "nuvctl gcode warmup.gcode", DeclareGcode}};
}

}  // namespace NuvCtl
