#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <stdexcept>

#include "error.h"
#include "library.h"
#include "subcommands.h"
#include "text.h"

namespace nuvctl {
namespace {

struct Subcommand {
  const char* name;
  const char* summary;
  const char* example;
  Action (*declare)(CLI::App& app);
};

constexpr Subcommand kSubcommands[] = {
    {"list", "List the printers on the network or, with --usb, on USB", "nuvctl list", DeclareList},
    {"info", "Show what a printer is", "nuvctl info --serial SN0042", DeclareInfo},
    {"status", "Show what a printer does", "nuvctl status --json", DeclareStatus},
    {"send", "Send a print file and make sure that the printer took it",
     "nuvctl send crown.nuv --address 192.168.0.20", DeclareSend},
    {"gcode", "Send a text file of printer commands", "nuvctl gcode warmup.gcode", DeclareGcode},
    {"raw", "Send one command and show the reply", "nuvctl raw \"F101\"", DeclareRaw},
    {"resin", "Show the resin in the printer", "nuvctl resin", DeclareResin},
    {"sensors", "Show what the sensors and the light engine measure", "nuvctl sensors --laser 1",
     DeclareSensors},
    {"jobs", "Show the counts of jobs and the newest jobs", "nuvctl jobs --last 20", DeclareJobs},
    {"versions", "Show the versions of firmware and boards", "nuvctl versions", DeclareVersions},
    {"tank", "Show the tank in place", "nuvctl tank", DeclareTank},
    {"leds", "Show how long the light source has been on", "nuvctl leds", DeclareLeds},
    {"nickname", "Show or set the nickname", "nuvctl nickname \"Lab one\"", DeclareNickname},
    {"laser-power", "Show or set the laser power", "nuvctl laser-power 80", DeclareLaserPower},
    {"z-compensation", "Show or set the Z compensation", "nuvctl z-compensation -20",
     DeclareZCompensation},
    {"scaling", "Show or set the scaling of the build",
     "nuvctl scaling 1.002 1.002 0.998 0.998 1 1", DeclareScaling},
    {"skip-warmup", "Skip the warm-up that the printer is in", "nuvctl skip-warmup",
     DeclareSkipWarmup},
    {"wifi", "List, join and leave wireless networks", "nuvctl wifi connect \"Lab net\"",
     DeclareWifi},
};

constexpr char kFooter[] =
    "Without --serial, --address or --index the only printer found is used.\n"
    "\n"
    "Exit codes:\n"
    "  0    done\n"
    "  1    the printer refused, failed, lacks what was asked for or did not take the job\n"
    "  2    wrong usage\n"
    "  3    no printer found, or several and none chosen\n"
    "  4    the file cannot be read or is not fit for the printer\n"
    "  5    the printer did not answer or could not be opened\n"
    "  6    a problem of this computer: a library is missing, output cannot be written\n"
    "  130  cancelled with Ctrl-C\n"
    "\n"
    "Environment: NUVCONNECT_DEBUG, when set, does what --debug does.";

constexpr int kMaxTimeoutMs = 600000;
constexpr int kMaxPort = 65535;

// A range that the help does not spell out; the message about a wrong value does.
CLI::Validator Between(int least, int most) { return CLI::Range(least, most).description(""); }

void DeclareGlobals(CLI::App& app, Options& options) {
  app.add_flag("--json", options.json, "Write one JSON document to the standard output");
  app.add_flag("--debug", options.debug, "Write diagnostics of the connection to standard error");
  CLI::Option* const usb =
      app.add_flag("--usb", options.usb, "Use the printers on USB instead of those on the network");
  app.add_option("--timeout", options.timeout_ms, "Milliseconds that the search for printers waits")
      ->type_name("MS")
      ->check(Between(1, kMaxTimeoutMs))
      ->capture_default_str();
  app.add_option("--port", options.port, "UDP port of the search")
      ->type_name("N")
      ->check(Between(1, kMaxPort));
  CLI::Option* const serial =
      app.add_option("--serial", options.serial, "Use the printer with this serial number")
          ->type_name("S");
  CLI::Option* const address =
      app.add_option("--address", options.address, "Use the printer at this IPv4 address")
          ->type_name("A")
          ->check(CLI::ValidIPV4);
  CLI::Option* const index =
      app.add_option("--index", options.index, "Use the printer at this place of the list, from 0")
          ->type_name("N")
          ->check(Between(0, std::numeric_limits<int>::max()));
  serial->excludes(address)->excludes(index);
  address->excludes(index)->excludes(usb);
}

// Declares all subcommands; the one that is parsed stores its action in `chosen`.
void DeclareSubcommands(CLI::App& app, Action& chosen) {
  std::string examples = "Examples:\n";
  for (const Subcommand& row : kSubcommands) {
    CLI::App* const sub = app.add_subcommand(row.name, row.summary);
    sub->footer(std::string("Example:\n  ") + row.example +
                "\n\nThe options of 'nuvctl --help' may stand here too.");
    const Action action = row.declare(*sub);
    sub->callback([&chosen, action] { chosen = action; });
    examples += std::string("  ") + row.example + '\n';
  }
  app.require_subcommand(1);
  app.footer(examples + '\n' + kFooter);
}

// Writes the answer in the form asked for and makes sure that it arrived.
int WriteReport(const Report& report, bool json, ExitCode exit, std::ostream& out,
                std::ostream& err) {
  using Json = nlohmann::ordered_json;
  if (json) {
    // ASCII only, so that a printer's control characters never reach a terminal this way either.
    const Json document = report.json.is_null() ? Json::object() : report.json;
    out << document.dump(2, ' ', true, Json::error_handler_t::replace) << '\n';
  } else {
    out << report.text;
  }
  out.flush();
  if (out) return exit;
  err << "nuvctl: the output could not be written\n";
  return exit == kDone ? kLocalProblem : exit;
}

// What is told of wrong arguments. A key may be among those of wifi, given there by mistake, so
// they are not repeated; what is missing can be told.
CommandError UsageError(const CLI::ParseError& error, const std::vector<std::string>& arguments) {
  const bool wifi = std::find(arguments.begin(), arguments.end(), "wifi") != arguments.end();
  if (!wifi || dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
    return CommandError("usage", kUsage, error.what(), "Run 'nuvctl --help' for the usage.");
  }
  return CommandError("usage", kUsage, "The arguments of 'nuvctl wifi' are wrong",
                      "Run 'nuvctl wifi --help' for the usage. A key is asked for or read from the "
                      "standard input, never given as an argument; the shell remembers those.");
}

int WriteError(const CommandError& error, bool json, std::ostream& out, std::ostream& err) {
  Report report = error.shown;
  if (!json && !error.shown_is_result) report.text.clear();
  nlohmann::ordered_json told = {
      {"code", error.code}, {"message", error.message}, {"hint", error.hint}};
  if (error.result) told["result"] = *error.result;
  report.json["error"] = told;
  const int exit = WriteReport(report, json, error.exit, out, err);
  if (!json) {
    err << "nuvctl: " << Printable(error.message) << ".\n";
    if (!error.shown_is_result) err << error.shown.text;
    if (!error.hint.empty()) err << Printable(error.hint) << '\n';
    err.flush();
  }
  return exit;
}

Report RunAction(const Action& action, Context& context) {
  if (context.options.debug) context.system.SetEnvironment("NUVCONNECT_DEBUG", "1");
  try {
    const Library library;
    return action(context);
  } catch (const std::logic_error& error) {
    // std::invalid_argument and std::out_of_range: how the library reports a malformed number.
    throw CommandError(
        "bad_reply", kPrinterFailed,
        std::string("The printer's reply cannot be understood (") + error.what() + ")",
        "'nuvctl raw' shows a reply as the printer sends it.");
  }
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   System& system) {
  // Guessed before parsing, because errors of parsing are told in the same form.
  bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  try {
    CLI::App app("Finds resin 3D printers, shows what they are and do, and sends them jobs.",
                 "nuvctl");
    app.set_version_flag("--version", "nuvctl " NUVCTL_VERSION, "Show the version and leave");
    app.allow_windows_style_options(false);
    app.fallthrough();
    Options options;
    Action action;
    DeclareGlobals(app, options);
    DeclareSubcommands(app, action);
    try {
      app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error, out, err);  // --help, --version
      throw UsageError(error, arguments);
    }
    json = options.json;
    Context context{options, system, err};
    return WriteReport(RunAction(action, context), json, kDone, out, err);
  } catch (const CommandError& error) {
    return WriteError(error, json, out, err);
  } catch (const std::exception& error) {
    return WriteError(
        CommandError("internal", kLocalProblem, std::string("Unexpected fault: ") + error.what(),
                     "Please report it, with what --debug shows."),
        json, out, err);
  }
}

}  // namespace nuvctl
