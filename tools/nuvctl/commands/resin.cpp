#include "commands/commands.h"
#include "error.h"
#include "format.h"
#include "library.h"
#include "printer.h"

namespace NuvCtl {
namespace {

constexpr char kMillilitres[] = " ml";

// Each adds what one kind of printer tells of its resin and returns the library's result.

int AddResin(FieldReport& report) {
  int state = 0;
  int remaining = 0;
  int volume = 0;
  TextBuffer code, lot;
  const int result = API_GetResinInfo2(&state, &remaining, code.Data(), &volume, lot.Data());
  if (result != NUV_OK) return result;
  report.AddNumber("State", "state", state);
  report.AddNumber("Left", "remaining_ml", remaining, kMillilitres);
  report.AddText("Resin code", "code", code.Text());
  report.AddText("Lot", "lot", lot.Text());
  report.AddNumber("Tank volume", "tank_volume_ml", volume, kMillilitres);
  return result;
}

int AddFirstModelResin(FieldReport& report) {
  int state = 0;
  int remaining = 0;
  TextBuffer date, type;
  const int result = API_GetResinInfo(&state, &remaining, date.Data(), type.Data());
  if (result != NUV_OK) return result;
  report.AddNumber("State", "state", state);
  report.AddNumber("Left", "remaining_ml", remaining, kMillilitres);
  report.AddText("Resin type", "type", type.Text());
  report.Add("Use by", FormatStamp(date.Text()), "use_by", date.Text());
  return result;
}

int AddBegoResin(FieldReport& report) {
  TextBuffer name, lot, expiry, volume;
  const int result = API_GetResinInfo_BEGO(name.Data(), lot.Data(), expiry.Data(), volume.Data());
  if (result != NUV_OK) return result;
  report.AddText("Resin", "name", name.Text());
  report.AddMeasure("Left", "remaining_ml", volume.Text(), kMillilitres);
  report.AddText("Lot", "lot", lot.Text());
  report.Add("Use by", FormatStamp(expiry.Text()), "use_by", expiry.Text());
  return result;
}

int AddResinOf(const std::string& model, FieldReport& report) {
  if (model == kBegoModel) return AddBegoResin(report);
  if (model == kFirstModel || model == kFirstModelRevised) return AddFirstModelResin(report);
  return AddResin(report);
}

void AddTag(FieldReport& report) {
  int openMode = 0;
  const bool known = Answered(API_IsOpenModeSupported(&openMode), "Reading the open mode");
  if (known) report.AddFlag("Takes resin without a tag", "open_mode", openMode != 0);
  int registered = 0;
  const bool accepted =
      Answered(API_IsRegisteredCorrectTag(&registered), "Reading the registration of the tag");
  if (known || accepted) {
    report.AddFlag("Tag registered", "tag_registered", accepted && registered != 0);
  } else {
    // Both a wrong tag and a model without the query are refused; the open mode tells them apart.
    report.Add("Tag registered", "no, or not known", "tag_registered", nullptr);
  }
}

bool IsResinRefusal(int result) {
  return result >= NUV_RESIN_EMPTY && result <= NUV_RESIN_WRONG_TYPE;
}

Report RunResin(Context& context) {
  OpenPrinter(context.choice);
  const std::string model = ReadIdentity().model;
  FieldReport report;
  report.AddText("Model", "model", model);
  const int result = AddResinOf(model, report);
  if (!IsResinRefusal(result)) {
    CheckQuery(result, "Reading the resin");
    AddTag(report);
    return report.Finish();
  }
  CommandError error = FailureOf(result, "Reading the resin");
  error.message = "The printer cannot print with this resin: " + ReasonOf(result);
  AddTag(report);
  error.shown = report.Finish();
  error.shownIsResult = true;
  throw error;
}

}  // namespace

Subcommands ResinCommands() {
  return {{"resin", "Show the resin in the printer", "nuvctl resin", Plain<RunResin>}};
}

}  // namespace NuvCtl
