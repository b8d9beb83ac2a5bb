#include "nuvsim/control/language.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>

#include "nuvsim/json_object.h"

namespace NuvSim {
namespace {

using nlohmann::json;

constexpr int64_t kMaxInt = std::numeric_limits<int>::max();

// One request under way.
struct Call {
  Simulator& simulator;
  JsonObject& request;
  size_t printer;
};

const char* Name(JobStatus status) {
  switch (status) {
    case JobStatus::kReceiving:
      return "receiving";
    case JobStatus::kPrinting:
      return "printing";
    case JobStatus::kFinished:
      return "finished";
    case JobStatus::kAbandoned:
      break;
  }
  return "abandoned";
}

json Describe(const JobRecord& job) {
  return {{"index", job.index},
          {"status", Name(job.status)},
          {"announcedBytes", job.announced.bytes},
          {"receivedBytes", job.receivedBytes},
          {"lines", job.lines},
          {"layers", job.announced.layers},
          {"file", job.file.string()}};
}

json Describe(const Counters& totals) {
  return {{"connections", totals.connections},     {"connectionsEnded", totals.connectionsEnded},
          {"bytesReceived", totals.bytesReceived}, {"requests", totals.requests},
          {"answersSent", totals.answersSent},     {"jobsAccepted", totals.jobsAccepted},
          {"jobsFinished", totals.jobsFinished},   {"jobsAbandoned", totals.jobsAbandoned},
          {"overruns", totals.overruns},           {"overrunBytes", totals.overrunBytes},
          {"searches", totals.searches},           {"faultsApplied", totals.faultsApplied},
          {"writeErrors", totals.writeErrors}};
}

json DescribePrinter(const Simulator& simulator, size_t printer) {
  const PrinterStatus status = simulator.Status(printer);
  const PrinterConfig& config = simulator.Config(printer);
  json jobs = json::array();
  for (const JobRecord& job : simulator.Jobs(printer)) jobs.push_back(Describe(job));
  return {{"printer", printer},
          {"model", config.model},
          {"serial", config.serial},
          {"port", simulator.TcpPort(printer)},
          {"state", static_cast<int>(status.state)},
          {"errorNumber", status.errorNumber},
          {"layer", status.layer},
          {"freeBytes", status.freeBytes},
          {"connected", status.connected},
          {"usbBusId", simulator.UsbBusId(printer)},
          {"attached", status.attached},
          {"plugged", status.plugged},
          {"armedFaults", status.armedFaults},
          {"commandFile", simulator.CommandFile(printer).string()},
          {"totals", Describe(simulator.Totals(printer))},
          {"jobs", jobs}};
}

json Status(const Call& call) {
  json printers = json::array();
  for (size_t i = 0; i < call.simulator.PrinterCount(); ++i) {
    printers.push_back(DescribePrinter(call.simulator, i));
  }
  return {{"printers", printers}};
}

json Requests(const Call& call) { return {{"requests", call.simulator.Requests(call.printer)}}; }

json Describe(const ReceivedItem& item) {
  json blocks = json::array();
  for (const BlockRun& run : item.blocks) blocks.push_back({run.bytes, run.count});
  return {{"kind", item.kind},
          {"name", item.name},
          {"job", item.job},
          {"announcedBytes", item.announcedBytes},
          {"receivedBytes", item.receivedBytes},
          {"blocks", blocks},
          {"complete", item.complete},
          {"started", item.started},
          {"sha1", item.sha1},
          {"file", item.file.string()}};
}

json Received(const Call& call) {
  json items = json::array();
  for (const ReceivedItem& item : call.simulator.Received(call.printer)) {
    items.push_back(Describe(item));
  }
  return {{"received", items}};
}

json InjectFault(const Call& call) {
  const json* fault = call.request.Find("fault");
  if (fault == nullptr) throw ConfigError("request.fault: is missing");
  call.request.RefuseOthers();
  JsonObject words(*fault, "request.fault");
  call.simulator.InjectFault(call.printer, ParseFault(words));
  return json::object();
}

json ClearFaults(const Call& call) {
  call.simulator.ClearFaults(call.printer);
  return json::object();
}

json SetState(const Call& call) {
  std::string to;
  call.request.Read("to", to);
  const bool takesNumber = to == "error" || to == "resin-refused";
  if (takesNumber && !call.request.Has("number")) {
    throw ConfigError("request.number: is missing");
  }
  int number = 0;
  if (takesNumber) call.request.ReadInteger("number", -kMaxInt, kMaxInt, number);
  call.request.RefuseOthers();
  if (to == "error") {
    call.simulator.SetError(call.printer, number);
  } else if (to == "no-error") {
    call.simulator.ClearError(call.printer);
  } else if (to == "idle") {
    call.simulator.SetIdle(call.printer);
  } else if (to == "resin-refused") {
    call.simulator.SetResinRefusal(call.printer, number);
  } else if (to == "resin-accepted") {
    call.simulator.SetResinRefusal(call.printer, std::nullopt);
  } else if (to == "tag-registered" || to == "tag-unregistered") {
    call.simulator.SetTagRegistered(call.printer, to == "tag-registered");
  } else if (to == "repositioning" || to == "in-position") {
    call.simulator.SetRepositioning(call.printer, to == "repositioning");
  } else {
    throw ConfigError(
        "request.to: must be error, no-error, idle, resin-refused, resin-accepted, "
        "tag-registered, tag-unregistered, repositioning or in-position");
  }
  return json::object();
}

json Unplug(const Call& call) {
  call.simulator.Unplug(call.printer);
  return json::object();
}

json Replug(const Call& call) {
  call.simulator.Replug(call.printer);
  return json::object();
}

json Quit(const Call&) { return {{"quit", true}}; }

// `hasMore`: the verb reads keys of its own, and refuses the unknown ones.
struct VerbRow {
  const char* name;
  json (*carryOut)(const Call&);
  bool hasMore;
};

constexpr VerbRow kVerbs[] = {
    {"status", Status, false},    {"requests", Requests, false}, {"received", Received, false},
    {"fault", InjectFault, true}, {"clear", ClearFaults, false}, {"state", SetState, true},
    {"unplug", Unplug, false},    {"replug", Replug, false},     {"quit", Quit, false},
};

json CarryOut(Simulator& simulator, const std::string& text, bool& quits) {
  const json document = ParseJson(text, "request");
  JsonObject request(document, "request");
  std::string verb;
  request.Read("do", verb);
  const auto* row = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                 [&verb](const VerbRow& each) { return verb == each.name; });
  if (row == std::end(kVerbs)) {
    std::string names;
    for (const VerbRow& each : kVerbs) names += std::string(" ") + each.name;
    throw ConfigError("request.do: unknown '" + verb + "'; known:" + names);
  }
  size_t printer = 0;
  const auto last = static_cast<int64_t>(simulator.PrinterCount()) - 1;
  request.ReadInteger("printer", 0, last, printer);
  if (!row->hasMore) request.RefuseOthers();
  json answer = row->carryOut({simulator, request, printer});
  quits = row->carryOut == Quit;
  answer["ok"] = true;
  return answer;
}

// Requests and names may hold any bytes, JSON may not.
std::string Line(const json& answer) {
  return answer.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

ControlAnswer ControlSimulator(Simulator& simulator, const std::string& request) {
  ControlAnswer answer;
  try {
    answer.line = Line(CarryOut(simulator, request, answer.quits));
  } catch (const std::exception& error) {
    answer.line = Line({{"error", error.what()}});
  }
  return answer;
}

}  // namespace NuvSim
