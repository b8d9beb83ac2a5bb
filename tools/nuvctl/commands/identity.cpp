#include "commands/commands.h"
#include "commands/several.h"
#include "state.h"
#include "target.h"

namespace NuvCtl {
namespace {

// ---- What it is

FieldReport IdentityReport(const nuv::Identity& who) {
  FieldReport report;
  report.AddText("Address", "address", AddressText(who));
  report.AddText("Name", "name", who.name);
  report.AddText("Model", "model", who.model);
  report.AddText("Serial number", "serial", who.serial);
  report.AddText("Firmware", "firmware", who.firmware);
  report.AddText("Controller", "controller", who.controller);
  const auto nickname = who.nickname ? nlohmann::ordered_json(*who.nickname) : nullptr;
  report.Add("Nickname", who.nickname.value_or("?"), "nickname", nickname);
  report.AddText("Manufactured", "manufactured", who.manufactured);
  return report;
}

Report RunInfo(const Context& context) {
  Target target = OpenTarget(context);
  return IdentityReport(target.Who()).Finish();
}

Answer InfoRow(nuv::Printer& printer, const nuv::Call& call) {
  const nuv::Identity who = printer.GetIdentity(call);
  return {{who.model.value_or(""), who.serial.value_or(""), who.firmware.value_or(""),
           who.nickname.value_or("?")},
          IdentityReport(who).Finish().json,
          {}};
}

Action DeclareInfo(CLI::App& app) {
  return DeclareAll(app, RunInfo, {"MODEL", "SERIAL", "FIRMWARE", "NICKNAME"}, InfoRow);
}

// ---- What it does

Report RunStatus(const Context& context) {
  Target target = OpenTarget(context);
  const nuv::State state = target.Ask("Reading the state", &nuv::Printer::GetState);
  std::optional<int> layers;
  if (IsPrinting(state)) {
    const auto job = target.Try("Reading the job", &nuv::Printer::GetJob);
    if (job) layers = job->layers;
  }
  return {FormatFields(StateFields(state, layers)), StateJson(state, layers)};
}

Answer StatusRow(nuv::Printer& printer, const nuv::Call& call) {
  const nuv::State state = printer.GetState(call);
  const std::string name =
      StateName(state.state) +
      (state.errorNumber ? " " + std::to_string(*state.errorNumber) : std::string());
  Answer answer{{name}, StateJson(state, std::nullopt), {}};
  if (IsPrinting(state)) {
    answer.cells.push_back(state.jobName.value_or(""));
    answer.cells.push_back(state.percent ? std::to_string(*state.percent) + " %" : "");
    answer.cells.push_back(state.endsAt ? TimeText(*state.endsAt) : "not known");
  }
  return answer;
}

Action DeclareStatus(CLI::App& app) {
  return DeclareAll(app, RunStatus, {"STATE", "JOB", "PROGRESS", "ENDS"}, StatusRow);
}

// ---- Versions

FieldReport VersionsReport(const nuv::Identity& who, const std::optional<nuv::Versions>& versions) {
  FieldReport report;
  report.AddText("Firmware", "firmware", who.firmware);
  report.AddText("Controller", "controller", who.controller);
  if (versions) {
    report.AddText("Android board", "android", versions->androidBoard);
    report.AddText("Android loader", "android_loader", versions->androidLoader);
    report.AddText("LCM panel", "lcm_panel", versions->lcmPanel);
  }
  return report;
}

Report RunVersions(const Context& context) {
  Target target = OpenTarget(context);
  const nuv::Identity who = target.Who();
  return VersionsReport(who, target.Try("Reading the versions", &nuv::Printer::GetVersions))
      .Finish();
}

Answer VersionsRow(nuv::Printer& printer, const nuv::Call& call) {
  const nuv::Identity who = printer.GetIdentity(call);
  std::optional<nuv::Versions> versions;
  try {
    versions = printer.GetVersions(call);
  } catch (const nuv::Error& error) {
    if (error.Reason() != nuv::Result::kRefused) throw;
  }
  TableRow cells = {who.firmware.value_or(""), who.controller.value_or("")};
  if (versions) {
    cells.push_back(versions->androidBoard.value_or(""));
    cells.push_back(versions->lcmPanel.value_or(""));
  }
  return {cells, VersionsReport(who, versions).Finish().json, {}};
}

Action DeclareVersions(CLI::App& app) {
  return DeclareAll(app, RunVersions, {"FIRMWARE", "CONTROLLER", "ANDROID", "LCM-PANEL"},
                    VersionsRow);
}

Report RunSkipWarmup(const Context& context) {
  Target target = OpenToChange(context);
  target.Tell("Skipping the warm-up",
              "Only a printer that is warming up can skip it, and not every model warms up.",
              &nuv::Printer::SkipWarmup);
  return {"The printer skips its warm-up.\n", {{"warmup", "skipped"}}};
}

}  // namespace

Subcommands IdentityCommands() {
  return {
      {"info", "Show what a printer is", "nuvctl info --serial SN0042", DeclareInfo},
      {"status", "Show what a printer does", "nuvctl status --all", DeclareStatus},
      {"versions", "Show the versions of firmware and boards", "nuvctl versions", DeclareVersions},
      {"skip-warmup", "Skip the warm-up that the printer is in", "nuvctl skip-warmup",
       Plain<RunSkipWarmup>}};
}

}  // namespace NuvCtl
