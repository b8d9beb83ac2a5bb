// Identity, state, job and resin.

#include "printer/asking.h"
#include "printer/query.h"

using namespace Nuv::Printer;

nuv_result nuv_printer_get_identity(nuv_identity* out, nuv_printer* printer, const nuv_call* call,
                                    nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_identity& identity) {
    identity = session.GetDevice().Where();
    session.AskWho(identity);
  });
}

nuv_result nuv_printer_get_state(nuv_state* out, nuv_printer* printer, const nuv_call* call,
                                 nuv_error* error) {
  return Answer(out, error, printer, call, AskState);
}

nuv_result nuv_printer_get_job(nuv_job* out, nuv_printer* printer, const nuv_call* call,
                               nuv_error* error) {
  return Answer(out, error, printer, call, AskJob);
}

nuv_result nuv_printer_skip_warmup(nuv_printer* printer, const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [](Session& session) { session.Run(112); });
}

nuv_result nuv_printer_get_resin(nuv_resin* out, nuv_printer* printer, const nuv_call* call,
                                 nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_resin& resin) {
    AskResin(session, resin);
    if (const auto mode = session.Try(335)) Take(*mode, {{"S", &resin.open_mode}});
    // Who has open mode has tags: there a refusal is the answer.
    if (resin.open_mode.known != 0) resin.tag_registered = Known(session.Try(219) ? 1 : 0);
  });
}
