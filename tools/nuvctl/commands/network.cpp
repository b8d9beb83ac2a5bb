#include <CLI/CLI.hpp>
#include <memory>

#include "commands/commands.h"
#include "error.h"
#include "format.h"
#include "library.h"
#include "printer.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

constexpr int kJoinAttempts = 20;  // an address is asked for too, which takes its time

struct AccessPoint {
  std::string name;
  bool open = false;
};

std::string SecurityName(int security) {
  constexpr const char* kNames[] = {"open", "secured"};
  return FormatName(kNames, security);
}

Report RunWifiList(Context& context) {
  OpenPrinter(context.choice);
  Report report;
  report.json["access_points"] = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  for (const std::string& name : ReadList(API_GetApList, "Reading the access points")) {
    nlohmann::ordered_json entry = {{"name", name}};
    TableRow row = {name};
    int signal = 0;
    int security = 0;
    // One that went out of reach meanwhile is refused.
    if (Answered(API_GetApAttribute(name.c_str(), &signal, &security),
                 "Reading the access point " + name)) {
      entry["signal_percent"] = signal;
      entry["security"] = SecurityName(security);
      row = {name, std::to_string(signal) + " %", SecurityName(security)};
    }
    report.json["access_points"].push_back(entry);
    rows.push_back(row);
  }
  report.text = rows.empty() ? "The printer sees no access point.\n"
                             : FormatTable({"NAME", "SIGNAL", "SECURITY"}, rows);
  return report;
}

bool ReadJoined() {
  int connected = 0;
  CheckQuery(API_IsconnectedAp(&connected), "Reading the state of the wireless network");
  return connected != 0;
}

Report RunWifiStatus(Context& context) {
  OpenPrinter(context.choice);
  FieldReport report;
  report.AddFlag("Joined to an access point", "connected", ReadJoined());
  const struct {
    int (*query)(char* out);
    const char* label;
    const char* key;
  } kPorts[] = {{API_GetMacAddressWifi, "MAC address, wireless", "mac_wifi"},
                {API_GetMacAddressLan, "MAC address, wired", "mac_lan"}};
  for (const auto& port : kPorts) {
    TextBuffer address;
    if (Answered(port.query(address.Data()), "Reading the MAC address")) {
      report.AddText(port.label, port.key, address.Text());
    }
  }
  return report.Finish();
}

CommandError OrderUnconfirmed(ExitCode exit, const std::string& reason) {
  return CommandError("not_confirmed", exit, "The printer accepted the order, but " + reason,
                      "A printer reached over its wireless network may now be at another address "
                      "or gone: look for it with 'nuvctl list', then run 'nuvctl wifi status'.");
}

// Waits until the printer is joined, or is not, as `joined` says.
void Confirm(Context& context, bool joined) {
  try {
    if (WaitFor(context.system, kJoinAttempts, [joined] { return ReadJoined() == joined; })) return;
  } catch (const CommandError& cause) {
    CommandError error =
        OrderUnconfirmed(cause.exit, "whether it did it is not known: " + cause.message);
    error.result = cause.result;
    throw error;
  }
  throw OrderUnconfirmed(kPrinterFailed, joined ? "is not joined" : "is still joined");
}

// The key is read before the printer is opened, so that no printer waits for a person.
std::string ReadKey(Context& context, const AccessPoint& point) {
  if (point.open) return std::string();
  std::optional<std::string> key =
      context.system.ReadSecret("Key of " + Printable(point.name) + ": ");
  if (!key) key.emplace();
  while (!key->empty() && (key->back() == '\n' || key->back() == '\r')) key->pop_back();
  if (key->empty()) {
    throw CommandError("usage", kUsage, "No key was read",
                       "Type it when asked, or write it to the standard input as one line; "
                       "--open is for access points without one.");
  }
  RequireOneLine(*key, "The key");
  return *key;
}

Report RunConnect(Context& context, const AccessPoint& point) {
  RequireOneLine(point.name, "The name of the access point");
  const std::string key = ReadKey(context, point);
  OpenPrinter(context.choice);
  CheckOrder(API_ConnectAp(point.name.c_str(), key.c_str()), "Joining " + point.name,
             "Check the key, and with 'nuvctl wifi list' that the access point is in reach and "
             "the model has a wireless network.");
  Confirm(context, true);
  return {"The printer joined " + Printable(point.name) + ".\n",
          {{"name", point.name}, {"connected", true}}};
}

Report RunDisconnect(Context& context) {
  OpenPrinter(context.choice);
  CheckOrder(API_DisconnectAp(), "Leaving the access point",
             "'nuvctl wifi status' shows whether the printer is joined to one; not every model has "
             "a wireless network.");
  Confirm(context, false);
  return {"The printer left its access point.\n", {{"connected", false}}};
}

Action DeclareWifi(CLI::App& app) {
  const auto chosen = std::make_shared<Action>();
  const auto point = std::make_shared<AccessPoint>();
  const auto declare = [&app, chosen](const char* name, const char* summary, const Action& action) {
    CLI::App* const sub = app.add_subcommand(name, summary);
    sub->callback([chosen, action] { *chosen = action; });
    return sub;
  };
  declare("list", "List the access points in reach of the printer", RunWifiList);
  declare("status", "Show whether the printer is joined to one", RunWifiStatus);
  CLI::App* const connect =
      declare("connect", "Join one; its key is asked for, or read from the standard input",
              [point](Context& context) { return RunConnect(context, *point); });
  connect->add_option("NAME", point->name, "The access point")->required()->type_name("");
  connect->add_flag("--open", point->open, "It has no key, so none is read");
  declare("disconnect", "Leave it", RunDisconnect);
  app.require_subcommand(1);
  return [chosen](Context& context) { return (*chosen)(context); };
}

}  // namespace

Subcommands NetworkCommands() {
  return {{"wifi", "List, join and leave wireless networks", "nuvctl wifi connect \"Lab net\"",
           DeclareWifi}};
}

}  // namespace NuvCtl
