// Identity, state, job and resin.

#include <ctime>

#include "command/commands.h"
#include "command/reply_views.h"
#include "printer/query.h"

using namespace Nuv::Printer;
using Nuv::Connect::Reason;

namespace {

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

void AskForResin(Session& session, nuv_resin& resin) {
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
  const Outcome dental = session.Run<Nuv::Command::F356Cmd>();
  Take(dental, {{"V", &resin.remaining_ml}});
  Take(dental, {{"N", &resin.name}, {"L", &resin.lot}, {"D", &resin.use_by}});
}

}  // namespace

nuv_result nuv_printer_get_identity(nuv_identity* out, nuv_printer* printer, const nuv_call* call,
                                    nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_identity& identity) {
    identity = session.GetDevice().Where();
    session.AskWho(identity);
  });
}

nuv_result nuv_printer_get_state(nuv_state* out, nuv_printer* printer, const nuv_call* call,
                                 nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_state& state) {
    const Outcome outcome = session.Run(102);
    Take(outcome, {{"S", &state.state}});
    if (state.state.known == 0)
      throw Failure{NUV_RESULT_UNREADABLE, "an answer without a state", 102};
    if (state.state.value == NUV_STATE_ERROR) Take(outcome, {{"E", &state.error_number}});
    if (state.state.value == NUV_STATE_PRINTING) TakeProgress(outcome, state);
  });
}

nuv_result nuv_printer_get_job(nuv_job* out, nuv_printer* printer, const nuv_call* call,
                               nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_job& job) {
    const auto whole = session.Try(107);
    if (whole) {
      Take(*whole, {{"L", &job.layers}, {"T", &job.minutes}});
      Take(*whole, {{"R", &job.name}});
    }
    const auto current = whole ? session.Try(157) : session.Run(157);
    if (current) Take(*current, {{"I", &job.index}, {"S", &job.bytes}});
  });
}

nuv_result nuv_printer_skip_warmup(nuv_printer* printer, const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [](Session& session) { session.Run(112); });
}

nuv_result nuv_printer_get_resin(nuv_resin* out, nuv_printer* printer, const nuv_call* call,
                                 nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_resin& resin) {
    AskForResin(session, resin);
    if (const auto mode = session.Try(335)) Take(*mode, {{"S", &resin.open_mode}});
    // Who has open mode has tags: there a refusal is the answer.
    if (resin.open_mode.known != 0) resin.tag_registered = Known(session.Try(219) ? 1 : 0);
  });
}

nuv_result nuv_printer_abandon_job(nuv_printer* printer, const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [](Session& session) { session.Run(104, {"2"}); });
}
