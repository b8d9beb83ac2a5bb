#include "commands/commands.h"
#include "commands/several.h"
#include "format.h"
#include "target.h"

namespace NuvCtl {
namespace {

constexpr char kMillilitres[] = " ml";

std::string StateText(nuv::ResinState state) {
  constexpr const char* kNames[] = {"ready",   "absent",      "tag unreadable",
                                    "expired", "wrong resin", "too little"};
  return FormatName(kNames, static_cast<int>(state));
}

// The one of the model's own words for the resin that it tells.
std::optional<std::string> ResinOf(const nuv::Resin& resin) {
  if (resin.name) return resin.name;
  return resin.type ? resin.type : resin.code;
}

FieldReport ResinReport(const nuv::Resin& resin) {
  FieldReport report;
  if (resin.state) {
    report.Add("State", StateText(*resin.state), "state", StateText(*resin.state));
  }
  report.AddNumber("Left", "remaining_ml", resin.remainingMl, kMillilitres);
  if (const auto what = ResinOf(resin)) report.Add("Resin", *what, "resin", *what);
  report.AddText("Resin code", "code", resin.code);
  report.AddText("Resin type", "type", resin.type);
  report.AddText("Resin name", "name", resin.name);
  report.AddText("Lot", "lot", resin.lot);
  report.AddNumber("Tank volume", "tank_volume_ml", resin.tankVolumeMl, kMillilitres);
  if (resin.useBy) report.Add("Use by", FormatStamp(*resin.useBy), "use_by", *resin.useBy);
  report.AddFlag("Takes resin without a tag", "open_mode", resin.openMode);
  if (resin.tagRegistered) {
    report.AddFlag("Tag registered", "tag_registered", resin.tagRegistered);
  } else {
    report.Add("Tag registered", "not known", "tag_registered", nullptr);
  }
  return report;
}

Report RunResin(const Context& context) {
  Target target = OpenTarget(context);
  const nuv::Resin resin = target.Ask("Reading the resin", &nuv::Printer::GetResin);
  Report report = ResinReport(resin).Finish();
  if (!resin.state || resin.state == nuv::ResinState::kReady) return report;
  CommandError error("resin_refused", kPrinterFailed,
                     "The printer cannot print with this resin: " + StateText(*resin.state),
                     "Change or fill up the resin.", report);
  error.shownIsResult = true;
  throw error;
}

Answer ResinRow(nuv::Printer& printer, const nuv::Call& call) {
  const nuv::Resin resin = printer.GetResin(call);
  return {{resin.state ? StateText(*resin.state) : "",
           resin.remainingMl ? std::to_string(*resin.remainingMl) + kMillilitres : "",
           ResinOf(resin).value_or(""), resin.lot.value_or(""),
           resin.useBy ? FormatStamp(*resin.useBy) : ""},
          ResinReport(resin).Finish().json,
          {}};
}

Action DeclareResin(CLI::App& app) {
  return DeclareAll(app, RunResin, {"STATE", "LEFT", "RESIN", "LOT", "USE-BY"}, ResinRow);
}

}  // namespace

Subcommands ResinCommands() {
  return {{"resin", "Show the resin in the printer", "nuvctl resin", DeclareResin}};
}

}  // namespace NuvCtl
