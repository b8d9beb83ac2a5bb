// Light engine, sensors and the boards' versions.

#include "command/reply_views.h"
#include "printer/query.h"

using namespace Nuv::Printer;

nuv_result nuv_printer_get_versions(nuv_versions* out, nuv_printer* printer, const nuv_call* call,
                                    nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_versions& versions) {
    const auto board = session.Try(310);
    if (board) Take(*board, {{"V", &versions.android_board}, {"L", &versions.android_loader}});
    const auto panel = board ? session.Try(504, {"0"}) : session.Run(504, {"0"});
    if (panel) Take(*panel, {{"V", &versions.lcm_panel}});
  });
}

nuv_result nuv_printer_get_sensors(nuv_sensors* out, nuv_printer* printer, const nuv_call* call,
                                   nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_sensors& sensors) {
    const auto readings = session.Try(301);
    if (readings) {
      Take(*readings, {{"C_T", &sensors.chamber_top_c},
                       {"C_B", &sensors.chamber_bottom_c},
                       {"T_T", &sensors.tank_c},
                       {"L_S", &sensors.resin_level_percent},
                       {"V_S", &sensors.tank},
                       {"ZLT", &sensors.z_limit_top},
                       {"ZLB", &sensors.z_limit_bottom},
                       {"W_H", &sensors.wiper_home},
                       {"Y_H", &sensors.y_home},
                       {"Y_F", &sensors.y_end},
                       {"C_LI", &sensors.lid_closed},
                       {"C_P", &sensors.cartridge},
                       {"P_S", &sensors.platform}});
    }
    const auto moves = readings ? session.Try(515) : session.Run(515);
    if (moves) Take(*moves, {{"R", &sensors.moving_to_reference}});
  });
}

nuv_result nuv_printer_get_laser(nuv_laser* out, nuv_printer* printer, int32_t number,
                                 const nuv_call* call, nuv_error* error) {
  return Answer(out, error, printer, call, [&](Session& session, nuv_laser& laser) {
    const std::vector<std::string> which = {std::to_string(number)};
    // By position: the reply's fields are pairs of a letter and a value, without keys to look up.
    const Outcome readings = session.Run(186, which);
    nuv_int* const outputs[] = {&laser.photodiode_minimum, &laser.photodiode_maximum,
                                &laser.photodiode_mean};
    for (size_t i = 0; i < std::size(outputs) && i < readings.values.size(); ++i) {
      *outputs[i] = Known(Nuv::Command::ParseDecimal(readings.values[i], readings.code));
    }
    Take(session.Run(303, which), {{"P1", &laser.pulse_width[0]},
                                   {"P2", &laser.pulse_width[1]},
                                   {"P3", &laser.pulse_width[2]},
                                   {"P4", &laser.pulse_width[3]},
                                   {"P5", &laser.pulse_width[4]}});
  });
}

nuv_result nuv_printer_get_scan_unit(nuv_scan_unit* out, nuv_printer* printer, const nuv_call* call,
                                     nuv_error* error) {
  return Answer(out, error, printer, call, [](Session& session, nuv_scan_unit& unit) {
    const Outcome outcome = session.Run(327);
    Take(outcome, {{"C1", &unit.scan_centre[0]},
                   {"C2", &unit.scan_centre[1]},
                   {"C3", &unit.scan_centre[2]},
                   {"L1", &unit.line_length[0]},
                   {"L2", &unit.line_length[1]},
                   {"L3", &unit.line_length[2]},
                   {"T1", &unit.trigger_delay[0]},
                   {"T2", &unit.trigger_delay[1]},
                   {"T3", &unit.trigger_delay[2]},
                   {"Z1", &unit.z_offset[0]},
                   {"Z2", &unit.z_offset[1]}});
    // Models with one scan line.
    Take(outcome, {{"C", &unit.scan_centre[0]},
                   {"L", &unit.line_length[0]},
                   {"T", &unit.trigger_delay[0]},
                   {"P", &unit.polygon_speed},
                   {"S", &unit.start},
                   {"W", &unit.line_width},
                   {"Y", &unit.y_offset}});
  });
}

nuv_result nuv_printer_get_led_hours(int32_t* out, nuv_printer* printer, const nuv_call* call,
                                     nuv_error* error) {
  return AnswerNumber(out, error, printer, call,
                      [](Session& session) { return session.Run(708).Number("H"); });
}
