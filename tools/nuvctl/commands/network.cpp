#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "format.h"
#include "target.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

constexpr int kJoinAttempts = 20;  // an address is asked for too, which takes its time

struct WantedPoint {
  std::string name;
  bool open = false;
};

std::string SecurityName(int security) {
  constexpr const char* kNames[] = {"open", "secured"};
  return FormatName(kNames, security);
}

Report RunWifiList(const Context& context) {
  Target target = OpenTarget(context);
  Report report;
  report.json["access_points"] = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  for (const nuv::AccessPoint& seen :
       target.Ask("Reading the access points", &nuv::Printer::GetAccessPoints)) {
    const std::string name = seen.name.value_or("");
    nlohmann::ordered_json entry = {{"name", name}};
    TableRow row = {name};
    // One that went out of reach meanwhile is refused.
    const auto point = target.Try("Reading the access point " + name, &nuv::Printer::GetAccessPoint,
                                  std::optional<std::string>(name));
    if (point) {
      if (point->signalPercent) entry["signal_percent"] = *point->signalPercent;
      if (point->security) entry["security"] = SecurityName(*point->security);
      row = {name, point->signalPercent ? std::to_string(*point->signalPercent) + " %" : "",
             point->security ? SecurityName(*point->security) : ""};
    }
    report.json["access_points"].push_back(entry);
    rows.push_back(row);
  }
  report.text = rows.empty() ? "The printer sees no access point.\n"
                             : FormatTable({"NAME", "SIGNAL", "SECURITY"}, rows);
  return report;
}

nuv::AccessPoint ReadJoined(Target& target) {
  return target.Ask("Reading the state of the wireless network", &nuv::Printer::GetAccessPoint,
                    std::optional<std::string>());
}

Report RunWifiStatus(const Context& context) {
  Target target = OpenTarget(context);
  FieldReport report;
  const nuv::AccessPoint joined = ReadJoined(target);
  report.AddFlag("Joined to an access point", "connected", joined.joined.value_or(false));
  report.AddText("Access point", "name", joined.name);
  report.AddNumber("Signal", "signal_percent", joined.signalPercent, " %");
  const auto port = [&](nuv::Port which) {
    return target.Try("Reading the network", &nuv::Printer::GetNetwork, which);
  };
  if (const auto wireless = port(nuv::Port::kWireless)) {
    report.AddText("Address", "address", wireless->address);
    report.AddText("MAC address, wireless", "mac_wifi", wireless->mac);
  }
  if (const auto wired = port(nuv::Port::kWired)) {
    report.AddText("MAC address, wired", "mac_lan", wired->mac);
  }
  return report.Finish();
}

CommandError OrderUnconfirmed(ExitCode exit, const std::string& reason) {
  return CommandError("not_confirmed", exit, "The printer accepted the order, but " + reason,
                      "A printer reached over its wireless network may now be at another address "
                      "or gone: look for it with 'nuvctl list', then run 'nuvctl wifi status'.");
}

// Waits until the printer is joined, or is not, as `joined` says.
void Confirm(const Context& context, Target& target, bool joined) {
  try {
    if (WaitFor(context.system, kJoinAttempts,
                [&] { return ReadJoined(target).joined.value_or(false) == joined; })) {
      return;
    }
  } catch (const CommandError& cause) {
    CommandError error =
        OrderUnconfirmed(cause.exit, "whether it did it is not known: " + cause.message);
    error.result = cause.result;
    throw error;
  }
  throw OrderUnconfirmed(kPrinterFailed, joined ? "is not joined" : "is still joined");
}

// The key is read before the printer is opened, so that no printer waits for a person.
std::optional<std::string> ReadKey(const Context& context, const WantedPoint& point) {
  if (point.open) return std::nullopt;
  std::optional<std::string> key =
      context.system.ReadSecret("Key of " + Printable(point.name) + ": ");
  if (!key) key.emplace();
  while (!key->empty() && (key->back() == '\n' || key->back() == '\r')) key->pop_back();
  if (key->empty()) {
    throw UsageError("No key was read",
                     "Type it when asked, or write it to the standard input as one line; --open is "
                     "for access points without one.");
  }
  RequireOneLine(*key, "The key");
  return key;
}

// A refusal is a wrong key, or a name that the printer does not see.
CommandError JoinRefused(Target& target, const std::string& name, CommandError refusal) {
  const auto points = target.Try("Reading the access points", &nuv::Printer::GetAccessPoints);
  if (!points) {
    refusal.hint = "Not every model has a wireless network.";
    return refusal;
  }
  const bool seen = std::any_of(points->begin(), points->end(),
                                [&](const nuv::AccessPoint& one) { return one.name == name; });
  refusal.code = seen ? "wrong_key" : "out_of_reach";
  refusal.message =
      seen ? "The key of " + name + " is wrong" : "The printer sees no access point " + name;
  refusal.hint = seen ? "Upper and lower case count. An earlier connection stays as it was."
                      : "'nuvctl wifi list' shows those that it sees.";
  return refusal;
}

Report RunConnect(const Context& context, const WantedPoint& point) {
  RequireOneLine(point.name, "The name of the access point");
  const std::optional<std::string> key = ReadKey(context, point);
  Target target = OpenToChange(context);
  try {
    target.Tell("Joining " + point.name, "", &nuv::Printer::JoinAccessPoint, point.name, key);
  } catch (const CommandError& error) {
    if (error.result != nuv::Result::kRefused) throw;
    throw JoinRefused(target, point.name, error);
  }
  Confirm(context, target, true);
  return {"The printer joined " + Printable(point.name) + ".\n",
          {{"name", point.name}, {"connected", true}}};
}

Report RunDisconnect(const Context& context) {
  Target target = OpenToChange(context);
  target.Tell(
      "Leaving the access point",
      "'nuvctl wifi status' shows whether the printer is joined to one; not every model has "
      "a wireless network.",
      &nuv::Printer::LeaveAccessPoint);
  Confirm(context, target, false);
  return {"The printer left its access point.\n", {{"connected", false}}};
}

Action DeclareWifi(CLI::App& app) {
  const auto chosen = std::make_shared<Action>();
  const auto point = std::make_shared<WantedPoint>();
  const auto declare = [&app, chosen](const char* name, const char* summary, const Action& action) {
    CLI::App* const sub = app.add_subcommand(name, summary)->group("Subcommands");
    sub->callback([chosen, action] { *chosen = action; });
    return sub;
  };
  declare("list", "List the access points in reach of the printer", RunWifiList);
  declare("status", "Show which one the printer is joined to", RunWifiStatus);
  CLI::App* const connect =
      declare("connect", "Join one; its key is asked for, or read from the standard input",
              [point](const Context& context) { return RunConnect(context, *point); });
  connect->add_option("NAME", point->name, "The access point")->required()->type_name("");
  connect->add_flag("--open", point->open, "It has no key, so none is read");
  declare("disconnect", "Leave it", RunDisconnect);
  app.require_subcommand(1);
  return [chosen](const Context& context) { return (*chosen)(context); };
}

}  // namespace

Subcommands NetworkCommands() {
  return {{"wifi", "List, join and leave wireless networks", "nuvctl wifi connect \"Lab net\"",
           DeclareWifi}};
}

}  // namespace NuvCtl
