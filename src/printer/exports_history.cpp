// What the printer keeps of its jobs.

#include "printer/query.h"

using namespace Nuv::Printer;

nuv_result nuv_printer_get_job_record(nuv_job_record* out, nuv_printer* printer, int32_t index,
                                      const nuv_call* call, nuv_error* error) {
  return Answer(out, error, printer, call, [&](Session& session, nuv_job_record& record) {
    const std::vector<std::string> job = {std::to_string(index)};
    const Outcome first = session.Run(174, job);
    const Outcome second = session.Run(175, job);
    const Outcome third = session.Run(176, job);
    const Outcome fourth = session.Run(177, job);
    record.index = Known(index);
    Take(first, {{"N", &record.name}, {"C", &record.resin_code}, {"T", &record.started}});
    Take(second, {{"L", &record.layers},
                  {"T", &record.minutes},
                  {"V", &record.resin_ml},
                  {"R", &record.result}});
    Take(third, {{"T", &record.layer_thickness_um},
                 {"E", &record.exposure_ms},
                 {"B", &record.bottom_exposure_ms},
                 {"P", &record.laser_power_percent}});
    Take(fourth, {{"Q", &record.resin_lot}});
    // A printer writes "-" while it has not ended.
    if (fourth.Text("T") != "-") Take(fourth, {{"T", &record.ended}});
  });
}

nuv_result nuv_printer_get_job_counts(nuv_job_counts* out, nuv_printer* printer,
                                      int32_t sincePowerOn, const nuv_call* call,
                                      nuv_error* error) {
  return Answer(out, error, printer, call, [&](Session& session, nuv_job_counts& counts) {
    Take(session.Run(169, {sincePowerOn != 0 ? "1" : "0"}), {{"S", &counts.started},
                                                             {"F", &counts.finished},
                                                             {"C", &counts.cancelled},
                                                             {"E", &counts.failed}});
  });
}

nuv_result nuv_printer_get_last_read_job(int32_t* out, nuv_printer* printer, const nuv_call* call,
                                         nuv_error* error) {
  return AnswerNumber(out, error, printer, call,
                      [](Session& session) { return session.Run(170).Number("I"); });
}

nuv_result nuv_printer_set_last_read_job(nuv_printer* printer, int32_t index, const nuv_call* call,
                                         nuv_error* error) {
  return OnPrinter(error, printer, call,
                   [&](Session& session) { session.Run(171, {std::to_string(index)}); });
}
