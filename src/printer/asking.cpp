#include "printer/asking.h"

#include <ctime>

#include "command/commands.h"
#include "printer/query.h"

namespace Nuv::Printer {
namespace {

using Connect::Reason;

// "45%" is 45.
void TakeProgress(const Outcome& outcome, nuv_state& state) {
  Take(outcome, {{"L", &state.layer}, {"C", &state.percent}, {"T", &state.minutes_left}});
  Take(outcome, {{"R", &state.job_name}});
  if (state.minutes_left.value == 0) state.minutes_left = {};  // it does not know
  if (state.minutes_left.known != 0) {
    constexpr int64_t kSecondsPerMinute = 60;
    state.ends_at =
        static_cast<int64_t>(std::time(nullptr)) + state.minutes_left.value * kSecondsPerMinute;
  }
}

// An answer of 105 or 120, also one that refuses with the resin's state. False: the model has no
// such query.
bool TakeResinState(const Outcome& outcome, nuv_resin& resin) {
  if (outcome.reason == Reason::kNone) {
    resin.state = Known(NUV_RESIN_STATE_READY);
    return true;
  }
  if (outcome.fields.count("S") == 0) return false;
  resin.state = Known(outcome.Number("S") + 1);
  return true;
}

}  // namespace

void AskState(Session& session, nuv_state& state) {
  const Outcome outcome = session.Run(102);
  Take(outcome, {{"S", &state.state}});
  if (state.state.known == 0)
    throw Failure{NUV_RESULT_UNREADABLE, "an answer without a state", 102};
  if (state.state.value == NUV_STATE_ERROR) Take(outcome, {{"E", &state.error_number}});
  if (state.state.value == NUV_STATE_PRINTING) TakeProgress(outcome, state);
}

void AskJob(Session& session, nuv_job& job) {
  const auto whole = session.Try(107);
  if (whole) {
    Take(*whole, {{"L", &job.layers}, {"T", &job.minutes}});
    Take(*whole, {{"R", &job.name}});
  }
  const auto current = whole ? session.Try(157) : session.Run(157);
  if (current) Take(*current, {{"I", &job.index}, {"S", &job.bytes}});
}

void AskResin(Session& session, nuv_resin& resin) {
  const Outcome code = session.Ask(105);
  if (TakeResinState(code, resin)) {
    Take(code, {{"R", &resin.remaining_ml}, {"V", &resin.tank_volume_ml}});
    Take(code, {{"C", &resin.code}, {"Q", &resin.lot}});
    return;
  }
  const Outcome type = session.Ask(120);
  if (TakeResinState(type, resin)) {
    Take(type, {{"R", &resin.remaining_ml}});
    Take(type, {{"D", &resin.use_by}, {"T", &resin.type}});
    return;
  }
  const Outcome dental = session.Run<Command::F356Cmd>();
  Take(dental, {{"V", &resin.remaining_ml}});
  Take(dental, {{"N", &resin.name}, {"L", &resin.lot}, {"D", &resin.use_by}});
}

const char* WordsForResin(int state) {
  switch (state) {
    case NUV_RESIN_STATE_ABSENT:
      return "no resin cartridge or tank is in place";
    case NUV_RESIN_STATE_TAG_UNREADABLE:
      return "the tag of the resin cannot be read";
    case NUV_RESIN_STATE_EXPIRED:
      return "the resin is past its use-by date";
    case NUV_RESIN_STATE_WRONG:
      return "the resin is not for this printer";
    case NUV_RESIN_STATE_TOO_LITTLE:
      return "there is too little resin";
    default:
      return "the printer does not accept the resin";
  }
}

}  // namespace Nuv::Printer
