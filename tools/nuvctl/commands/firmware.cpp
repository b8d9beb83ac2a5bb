#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>

#include "commands/commands.h"
#include "format.h"
#include "target.h"
#include "transfer.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

using nuv::OutcomeKind;

struct PartRow {
  const char* name;
  const char* words;
  nuv::Part part;
  std::optional<std::string> (*version)(Target& target);  // that is on it
};

std::optional<nuv::Versions> VersionsOf(Target& target) {
  return target.Try("Reading the versions", &nuv::Printer::GetVersions);
}

constexpr PartRow kParts[] = {
    {"engine", "engine", nuv::Part::kEngine, [](Target& target) { return target.Who().firmware; }},
    {"android", "Android board", nuv::Part::kAndroidBoard,
     [](Target& target) {
       const auto versions = VersionsOf(target);
       return versions ? versions->androidBoard : std::nullopt;
     }},
    {"panel", "LCM panel", nuv::Part::kLcmPanel,
     [](Target& target) {
       const auto versions = VersionsOf(target);
       return versions ? versions->lcmPanel : std::nullopt;
     }},
};

struct FirmwareOptions {
  std::string part;
  std::string file;
  bool force = false;
};

// An engine confirms an update in no way. Whether it still answers can be seen at least; one that
// restarts has closed the connection.
std::string AnswersAgain(const Context& context, Target& target) {
  constexpr int kAttempts = 60;
  std::optional<std::string> version;
  const auto answers = [&] {
    try {
      version =
          target.Ask("Reading the identity", &nuv::Printer::GetIdentity).firmware.value_or("");
    } catch (const CommandError& error) {
      if (error.exit == kCancelled) throw;
    }
    return version.has_value();
  };
  if (WaitFor(context.system, kAttempts, answers)) return *version;
  throw CommandError("update_unconfirmed", kConnectionProblem,
                     "Everything was sent, but the printer does not answer since",
                     "It may be restarting: run 'nuvctl info' in a minute, and look at its panel "
                     "before switching it off.");
}

// The failure of an image that went out in part or in full.
CommandError UpdateFailure(const Transfer& transfer, CommandError error) {
  const nuv::Outcome& outcome = transfer.outcome;
  if (outcome.kind == OutcomeKind::kRefused) error.code = "update_failed";
  if (outcome.kind == OutcomeKind::kUnconfirmed) error.code = "update_unconfirmed";
  if (outcome.kind == OutcomeKind::kUnconfirmed && outcome.bytesSent == transfer.total) {
    error.hint = "Look at its panel before switching it off, then try again.";
  } else if (outcome.kind != OutcomeKind::kNotFit) {
    error.hint = "The printer keeps its old firmware; run the command again for a new try.";
  }
  return error;
}

Report RunFirmware(const Context& context, const FirmwareOptions& options) {
  const PartRow& row =
      *std::find_if(std::begin(kParts), std::end(kParts),
                    [&](const PartRow& each) { return options.part == each.name; });
  RequireFile(options.file);
  RequireSomebodyToAsk(context, "A firmware update");
  Target target = OpenTarget(context);
  target.Who();
  context.output.Remark("Using the " + target.Description());
  const std::optional<std::string> version = row.version(target);
  // Asked only about an image against which nothing speaks, or that is forced.
  bool consents = true;
  const auto begins = [&] {
    const std::string question =
        std::string("Update the ") + row.words + " of the " + target.Description() +
        (version ? ", version " + Printable(*version) + "," : "") + " with " +
        Printable(options.file) + "?\nThe printer must stay on until it is done. [y/N] ";
    try {
      RequireConsent(context, question, "Not updated");
    } catch (const CommandError&) {
      consents = false;
    }
    return consents;
  };
  const Transfer transfer = RunTransfer(
      context, options.file, options.force,
      [&](const nuv::SendOptions& how, const nuv::Call& call) {
        return target.Printer().Update(row.part, std::filesystem::u8path(options.file), how, call);
      },
      begins);
  if (!consents) throw CommandError("cancelled", kCancelled, "Not updated", "Answer y to update.");
  try {
    RequireSent(options.file, transfer, "");
  } catch (const CommandError& error) {
    throw UpdateFailure(transfer, error);
  }
  Report report;
  const bool accepted = transfer.outcome.kind == OutcomeKind::kAccepted;
  report.json = TransferJson(options.file, transfer, accepted ? "accepted" : "sent");
  report.json["kind"] = row.name;
  report.text = "Sent " + Printable(options.file) + ": " + TransferText(transfer) + ".\n";
  if (accepted) {
    report.json["answer"] = transfer.outcome.message;
    report.text += "The printer answers: " + Printable(transfer.outcome.message) +
                   ". Leave it on until it is done.\n";
  } else {
    const std::string now = AnswersAgain(context, target);
    report.json["firmware"] = now;
    report.text +=
        "The printer confirms engine images in no way. It answers, with firmware version " +
        Printable(now) + ".\n";
  }
  return report;
}

Action DeclareFirmware(CLI::App& app) {
  const auto options = std::make_shared<FirmwareOptions>();
  std::vector<std::string> names;
  for (const PartRow& row : kParts) names.emplace_back(row.name);
  app.add_option("KIND", options->part, "engine, android or panel")
      ->required()
      ->type_name("")
      ->check(CLI::IsMember(names).description(""));
  app.add_option("FILE", options->file, "The image")->required()->type_name("");
  app.add_flag("--force", options->force, "Send also what does not seem to be such an image");
  return [options](const Context& context) { return RunFirmware(context, *options); };
}

}  // namespace

Subcommands FirmwareCommands() {
  return {{"firmware", "Update the firmware of the engine, the Android board or the LCM panel",
           "nuvctl firmware panel panel.bin", DeclareFirmware}};
}

}  // namespace NuvCtl
