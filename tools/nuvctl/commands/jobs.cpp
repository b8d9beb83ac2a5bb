#include <CLI/CLI.hpp>
#include <memory>

#include "commands/commands.h"
#include "commands/send_several.h"
#include "state.h"
#include "target.h"
#include "transfer.h"
#include "utf8.h"
#include "watching.h"

namespace NuvCtl {
namespace {

using nuv::PrinterState;

constexpr char kHeldHint[] =
    "The printer may still wait for the rest and takes no other job: 'nuvctl cancel' frees it.";

struct SendOptions {
  std::string file;
  bool force = false;
  bool dryRun = false;
  bool watch = false;
  bool progress = false;
  int retries = 0;
  WatchOptions watching;
};

// ---- Before

// What is wrong with the file itself, before a printer is searched for.
void RequireSound(const std::string& file) {
  RequireFile(file);
  const nuv::CheckReport check =
      Asked("Checking " + file, [&] { return nuv::CheckFile(std::filesystem::u8path(file)); });
  if (check.findings) throw NotFit(check.message, check.findings);
}

Report DryRun(const Context& context, Target& target, const std::string& file) {
  const nuv::CheckReport check = Asked("Checking " + file, [&] {
    return target.Printer().Check(std::filesystem::u8path(file), context.Endless());
  });
  nlohmann::ordered_json json = {{"file", file}, {"result", "fit"}, {"bytes", check.bytes}};
  if (check.resinNeededMl) json["resin_needed_ml"] = *check.resinNeededMl;
  if (check.resinLeftMl) json["resin_left_ml"] = *check.resinLeftMl;
  if (check.findings) {
    CommandError error = NotFit(check.message, check.findings);
    json["result"] = "not_fit";
    error.shown.json = json;
    throw error;
  }
  return {Printable(file) + " can be sent to the " + target.Description() + ".\n", json};
}

// ---- After a lost connection

// Number and bytes of the printer's last job, nothing when it does not tell.
std::optional<nuv::Job> LastJob(Target& target) {
  const auto job = target.Try("Reading the last job", &nuv::Printer::GetJob);
  return job && job->index ? job : std::nullopt;
}

// The same printer, once it answers again; over USB it may have come back at another port. Throws
// CommandError when it does not, or another one is in its place.
Target Again(const Context& context, Target target) {
  constexpr int kAttempts = 40;
  const nuv::Identity before = target.Where();
  const auto answers = [&] {
    try {
      if (before.link == nuv::Link::kUsb) {
        target.Printer() = nuv::Printer();  // which must not be open twice
        target = OpenAgain(context, before);
      }
      return target.Ask("Reading the identity", &nuv::Printer::GetIdentity).serial == before.serial;
    } catch (const CommandError& error) {
      if (error.exit == kCancelled) throw;
      return false;
    }
  };
  if (WaitFor(context.system, kAttempts, answers)) return target;
  throw CommandError("connection_lost", kConnectionProblem,
                     target.Name() + " did not come back, or is another printer now", kHeldHint);
}

// Whether the job can be sent again from its first line: the printer has none of it any more.
// Fills in the outcome when it has all.
bool CanRetry(const Context& context, Target& target, const std::optional<nuv::Job>& before,
              Transfer& transfer) {
  constexpr int kAttempts = 20;
  const bool lost = transfer.outcome.kind == nuv::OutcomeKind::kUnconfirmed &&
                    transfer.outcome.reason != nuv::Result::kUnconfirmed;
  if (!lost || !before) return false;
  target = Again(context, std::move(target));
  const std::optional<nuv::Job> now = LastJob(target);
  if (!now) return false;
  if (now->index != before->index && now->bytes == transfer.total) {
    transfer.outcome.kind = nuv::OutcomeKind::kAccepted;
    transfer.outcome.jobIndex = now->index;
    transfer.outcome.bytesSent = transfer.total;
    return false;
  }
  const auto state = [&] { return target.Ask("Reading the state", &nuv::Printer::GetState).state; };
  if (state() == PrinterState::kPrinting) return false;
  target.Tell("Abandoning the broken job", kHeldHint, &nuv::Printer::AbandonJob);
  return WaitFor(context.system, kAttempts, [&] { return state() == PrinterState::kIdle; });
}

// ---- Sending

Report SentReport(const std::string& file, const Transfer& transfer) {
  Report report;
  report.json = TransferJson(file, transfer, "accepted");
  if (transfer.outcome.jobIndex) report.json["job_index"] = *transfer.outcome.jobIndex;
  report.text =
      "Sent " + Printable(file) + ": " + TransferText(transfer) + ". The printer " +
      (transfer.outcome.jobIndex ? "took it as job " + std::to_string(*transfer.outcome.jobIndex)
                                 : "is printing it") +
      ".\n";
  return report;
}

Report SendTo(const Context& context, Target& target, const SendOptions& options) {
  context.output.Remark("Sending " + Printable(options.file));
  for (int retry = 0;; ++retry) {
    const std::optional<nuv::Job> before =
        options.retries > 0 ? LastJob(target) : std::optional<nuv::Job>();
    Transfer transfer = RunTransfer(context, options.file, options.force,
                                    [&](const nuv::SendOptions& how, const nuv::Call& call) {
                                      return target.Printer().Send(
                                          std::filesystem::u8path(options.file), how, call);
                                    });
    if (retry < options.retries && CanRetry(context, target, before, transfer)) {
      context.output.Remark("nuvctl: the connection was lost; once more, from the first line");
      continue;
    }
    RequireSent(options.file, transfer, kHeldHint);
    return SentReport(options.file, transfer);
  }
}

// One process sends one job at a time, so each printer gets one of its own.
Report SendToAll(const Context& context, const SendOptions& options) {
  if (options.watch) {
    throw UsageError("--watch follows one printer", "'nuvctl watch --all' follows all that print.");
  }
  if (options.progress)
    throw UsageError("--progress tells of one printer", "Run a nuvctl for each.");
  std::vector<std::string> same = {"--retry", std::to_string(options.retries)};
  if (options.force) same.emplace_back("--force");
  if (options.dryRun) same.emplace_back("--dry-run");
  return SendToSeveral(context, options.file, same);
}

Report RunSend(const Context& context, const SendOptions& options) {
  RequireSound(options.file);
  if (context.choice.printers.size() > 1) return SendToAll(context, options);
  if (options.progress) {
    context.output.TellProgress();
    context.system.WatchInput();
  }
  if (options.dryRun) {
    Target target = OpenTarget(context);
    target.Who();
    return DryRun(context, target, options.file);
  }
  Target target = OpenToChange(context);
  Report sent = SendTo(context, target, options);
  if (!options.watch) return sent;
  context.output.Stream(sent);
  WatchPrint(context, target, options.watching);
  return Report();
}

Report RunGcode(const Context& context, const std::string& file) {
  RequireFile(file);
  Target target = OpenToChange(context);
  context.output.Remark("Sending " + Printable(file));
  const Transfer transfer =
      RunTransfer(context, file, false, [&](const nuv::SendOptions& how, const nuv::Call& call) {
        return target.Printer().SendText(std::filesystem::u8path(file), how, call);
      });
  RequireSent(file, transfer, "The commands sent until then stay in effect; check the printer.");
  // Printers confirm command text in no way, so there is nothing to check and nothing to promise.
  return {"Sent " + Printable(file) + ": " + TransferText(transfer) +
              ". The printer does not confirm command files.\n",
          TransferJson(file, transfer, "sent")};
}

Report RunCancel(const Context& context) {
  constexpr int kAttempts = 10;
  constexpr int kPatienceMs = 5000;
  RequireSomebodyToAsk(context, "Cancelling a job");
  Choice choice = context.choice;
  choice.timeoutMs = std::min(choice.timeoutMs, kPatienceMs);
  const Context hurried{choice, context.output, context.system};
  Target target = OpenTarget(hurried);
  target.Who();
  const auto state = [&] { return target.Ask("Reading the state", &nuv::Printer::GetState); };
  const nuv::State before = state();
  if (before.state == PrinterState::kIdle) {
    return {"The printer is idle; there is no job to cancel.\n", {{"cancelled", false}}};
  }
  RequireConsent(context,
                 "Cancel what the " + target.Description() + " is doing (" +
                     Printable(StateText(before, std::nullopt)) + ")? [y/N] ",
                 "Not cancelled");
  target.Tell("Cancelling the job", "Cancel it at the printer's panel.", &nuv::Printer::AbandonJob);
  nuv::State after;
  const auto isFree = [&] {
    after = state();
    return after.state == PrinterState::kIdle;
  };
  if (WaitFor(context.system, kAttempts, isFree)) {
    return {"The printer abandoned its job and is idle.\n", {{"cancelled", true}}};
  }
  throw CommandError("not_confirmed", kPrinterFailed,
                     "The printer accepted the order, but is " + StateName(after.state),
                     "Look at its panel.");
}

// ---- The command line

// Adds what says how a print is followed.
void DeclareWatching(CLI::App& app, WatchOptions& options) {
  constexpr int kLongestMs = 3600000;
  app.add_option("--interval", options.intervalMs, "Milliseconds from look to look")
      ->type_name("MS")
      ->check(CLI::Range(kShortestIntervalMs, kLongestMs).description(""))
      ->capture_default_str();
  app.add_option("--give-up", options.giveUpMinutes, "Minutes without an answer until it gives up")
      ->type_name("MINUTES")
      ->check(CLI::Range(0, kLongestMs).description(""))
      ->capture_default_str();
  app.add_option("--then", options.then,
                 "Run this command at the end; NUVCTL_OUTCOME and NUVCTL_PRINTER say what it was")
      ->type_name("COMMAND");
}

Action DeclareSend(CLI::App& app) {
  constexpr int kMostRetries = 100;
  const auto options = std::make_shared<SendOptions>();
  app.add_flag("--watch", options->watch, "Then follow the print until it ends");
  DeclareWatching(app, options->watching);
  app.add_flag("--force", options->force, "Send also what does not seem fit for the printer");
  app.add_flag("--dry-run", options->dryRun, "Only look whether it could be sent");
  app.add_option("--retry", options->retries, "So often once more when the connection is lost")
      ->type_name("N")
      ->check(CLI::Range(0, kMostRetries).description(""));
  app.add_flag("--progress", options->progress,
               "For programs: lines \"SENT TOTAL\", in bytes, on standard error; the end of the "
               "standard input, a pipe, cancels");
  app.add_option("FILE", options->file, "The print file")->required()->type_name("");
  return [options](const Context& context) { return RunSend(context, *options); };
}

Action DeclareGcode(CLI::App& app) {
  const auto file = std::make_shared<std::string>();
  app.add_option("FILE", *file, "A text file, one printer command a line")
      ->required()
      ->type_name("");
  return [file](const Context& context) { return RunGcode(context, *file); };
}

Action DeclareWatch(CLI::App& app) {
  const auto options = std::make_shared<WatchOptions>();
  const auto all = std::make_shared<bool>(false);
  DeclareWatching(app, *options);
  app.add_flag("--all", *all, "All printers, known and found");
  return [=](const Context& context) {
    if (*all) {
      WatchAll(context, *options);
    } else {
      Target target = OpenTarget(context);
      WatchPrint(context, target, *options);
    }
    return Report();
  };
}

}  // namespace

Subcommands JobCommands() {
  return {
      {"send", "Send a print file to a printer, or to several, and make sure that it is taken",
       "nuvctl send crown.nuv --address 192.168.0.20", DeclareSend},
      {"watch", "Follow a print until it ends", "nuvctl watch --interval 5000", DeclareWatch},
      {"cancel", "Abandon the job that is sent or printed", "nuvctl cancel --serial SN0042",
       Plain<RunCancel>},
      {"gcode", "Send a text file of printer commands", "nuvctl gcode warmup.gcode", DeclareGcode}};
}

}  // namespace NuvCtl
