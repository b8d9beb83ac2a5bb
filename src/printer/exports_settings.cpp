// Settings: laser power, Z compensation, scaling, nickname.

#include "command/commands.h"
#include "command/reply_views.h"
#include "printer/query.h"

using namespace Nuv::Printer;

namespace {

// By which commands 159 and 332 tell their settings apart.
constexpr int kLaserPower = 0;
constexpr int kZCompensation = 1;

nuv_result GetSetting(int32_t* out, int setting, nuv_printer* printer, const nuv_call* call,
                      nuv_error* error) {
  return AnswerNumber(out, error, printer, call, [&](Session& session) {
    const Outcome outcome = session.Run(159, {std::to_string(setting)});
    // The answer to a question for the other setting has the same code.
    if (outcome.values.size() < 2 ||
        Nuv::Command::ParseDecimal(outcome.values[0], outcome.code) != setting) {
      throw Failure{NUV_RESULT_UNREADABLE, "an answer of another setting", outcome.code};
    }
    return Nuv::Command::ParseDecimal(outcome.values[1], outcome.code);
  });
}

nuv_result SetSetting(int setting, int32_t value, nuv_printer* printer, const nuv_call* call,
                      nuv_error* error) {
  return OnPrinter(error, printer, call, [&](Session& session) {
    session.Run(332, {std::to_string(setting), std::to_string(value)});
  });
}

// Two factors are one field.
std::string Joined(const double (&pair)[2]) {
  return Nuv::Command::Fixed(pair[0]) + "," + Nuv::Command::Fixed(pair[1]);
}

void Split(const std::string& text, double (&pair)[2]) {
  constexpr int kCode = Nuv::Command::F369Cmd::kCode;
  if (text.empty()) return;
  pair[0] = static_cast<double>(Nuv::Command::ParseFraction(text, kCode));
  const size_t comma = text.find(',');
  if (comma == std::string::npos) return;
  pair[1] = static_cast<double>(Nuv::Command::ParseFraction(text.substr(comma + 1), kCode));
}

}  // namespace

nuv_result nuv_printer_get_laser_power_percent(int32_t* out, nuv_printer* printer,
                                               const nuv_call* call, nuv_error* error) {
  return GetSetting(out, kLaserPower, printer, call, error);
}

nuv_result nuv_printer_set_laser_power_percent(nuv_printer* printer, int32_t percent,
                                               const nuv_call* call, nuv_error* error) {
  return SetSetting(kLaserPower, percent, printer, call, error);
}

nuv_result nuv_printer_get_z_compensation_um(int32_t* out, nuv_printer* printer,
                                             const nuv_call* call, nuv_error* error) {
  return GetSetting(out, kZCompensation, printer, call, error);
}

nuv_result nuv_printer_set_z_compensation_um(nuv_printer* printer, int32_t micrometres,
                                             const nuv_call* call, nuv_error* error) {
  return SetSetting(kZCompensation, micrometres, printer, call, error);
}

nuv_result nuv_printer_get_scaling(nuv_scaling* out, nuv_printer* printer, const nuv_call* call,
                                   nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_scaling& scaling) {
    const Outcome outcome = session.Run<Nuv::Command::F369Cmd>();
    Split(outcome.Text("X"), scaling.x);
    Split(outcome.Text("Y"), scaling.y);
    Split(outcome.Text("Z"), scaling.z);
  });
}

nuv_result nuv_printer_set_scaling(nuv_printer* printer, const nuv_scaling* scaling,
                                   const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [&](Session& session) {
    if (scaling == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no factors"};
    const nuv_scaling given = Given(scaling);
    session.Run<Nuv::Command::F370Cmd>({Joined(given.x), Joined(given.y), Joined(given.z)});
  });
}

nuv_result nuv_printer_set_nickname(nuv_printer* printer, const char* nickname,
                                    const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call,
                   [&](Session& session) { session.Run(196, {Line(nickname)}); });
}
