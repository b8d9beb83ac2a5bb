// The printer's own network: wireless access points and addresses.

#include "printer/lists.h"
#include "printer/query.h"

using namespace Nuv::Printer;

namespace {

void TakeAccessPoint(const Outcome& outcome, nuv_access_point& point) {
  Take(outcome, {{"C", &point.channel}, {"M", &point.security}, {"R", &point.signal_percent}});
  Take(outcome, {{"SSID", &point.name}});
  Take(outcome, {{"S", &point.joined}});
}

// Joins or leaves. A printer that goes away from the network over which it is asked cannot answer.
void ChangeAccessPoint(Session& session, std::vector<std::string> parameters) {
  try {
    session.Run(191, std::move(parameters));
  } catch (const Failure& failure) {
    if (failure.result != NUV_RESULT_LOST && failure.result != NUV_RESULT_NO_ANSWER) throw;
    throw Failure{NUV_RESULT_UNCONFIRMED, failure.message, failure.command};
  }
}

// A printer writes 0.0.0.0 for what it has not.
void TakeAddresses(const Outcome& outcome, nuv_network& network) {
  const std::pair<const char*, nuv_text*> fields[] = {{"IP", &network.address},
                                                      {"SUB", &network.netmask},
                                                      {"GATE", &network.gateway},
                                                      {"DNS1", &network.name_server},
                                                      {"DNS2", &network.second_name_server},
                                                      {"MAC", &network.mac}};
  for (const auto& [key, text] : fields) {
    if (outcome.Text(key) != "0.0.0.0") Take(outcome, {{key, text}});
  }
}

}  // namespace

nuv_result nuv_printer_get_access_point(nuv_access_point* out, nuv_printer* printer,
                                        const char* name, const nuv_call* call, nuv_error* error) {
  return Answer(out, error, printer, call, [&](Session& session, nuv_access_point& point) {
    std::vector<std::string> parameters;
    if (name != nullptr) parameters.push_back(Line(name));
    TakeAccessPoint(session.Run(190, std::move(parameters)), point);
  });
}

nuv_result nuv_printer_get_access_points(nuv_list** out, nuv_printer* printer, const nuv_call* call,
                                         nuv_error* error) {
  if (out != nullptr) *out = nullptr;
  return OnPrinter(error, printer, call, [&](Session& session) {
    if (out == nullptr) throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place for the list"};
    std::vector<nuv_access_point> points;
    // By position: all names have the same key.
    for (const std::string& name : session.Run(198).values) {
      points.push_back(NUV_INIT(nuv_access_point));
      points.back().name = Text(name);
    }
    *out = Lists().Add(std::make_shared<List>(std::move(points)));
  });
}

nuv_result nuv_printer_join_access_point(nuv_printer* printer, const char* name, const char* key,
                                         const nuv_call* call, nuv_error* error) {
  return OnPrinter(error, printer, call, [&](Session& session) {
    const std::string secret = key == nullptr ? "" : Line(key);
    ChangeAccessPoint(session, {"1", secret.empty() ? "0" : "1", "1", Line(name), secret});
  });
}

nuv_result nuv_printer_leave_access_point(nuv_printer* printer, const nuv_call* call,
                                          nuv_error* error) {
  return OnPrinter(error, printer, call,
                   [](Session& session) { ChangeAccessPoint(session, {"2"}); });
}

nuv_result nuv_printer_get_network(nuv_network* out, nuv_printer* printer, int32_t port,
                                   const nuv_call* call, nuv_error* error) {
  return Answer(out, error, printer, call, [&](Session& session, nuv_network& network) {
    if (port < NUV_PORT_IN_USE || port > NUV_PORT_WIRELESS) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no port of a printer"};
    }
    std::vector<std::string> parameters;
    if (port != NUV_PORT_IN_USE) parameters.push_back(std::to_string(port - NUV_PORT_WIRED));
    TakeAddresses(session.Run(192, std::move(parameters)), network);
  });
}
