#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string_view>

#include "commands/commands.h"
#include "error.h"
#include "library.h"
#include "output.h"

namespace NuvCtl {
namespace {

// The help names what is needed most first; what is not named here follows.
constexpr const char* kOrder[] = {
    "list",     "info",        "status",         "send",    "watch",       "firmware", "gcode",
    "raw",      "resin",       "sensors",        "jobs",    "versions",    "tank",     "leds",
    "nickname", "laser-power", "z-compensation", "scaling", "skip-warmup", "wifi"};

Subcommands AllSubcommands() {
  constexpr Subcommands (*kTopics[])() = {
      DeviceCommands,  IdentityCommands,    ResinCommands, SettingsCommands, NetworkCommands,
      HistoryCommands, LightEngineCommands, JobCommands,   FirmwareCommands, RawCommands};
  Subcommands all;
  for (const auto topic : kTopics) {
    for (const Subcommand& row : topic()) all.push_back(row);
  }
  const auto place = [](const Subcommand& row) {
    return std::find(std::begin(kOrder), std::end(kOrder), std::string_view(row.name));
  };
  std::stable_sort(all.begin(), all.end(),
                   [&](const Subcommand& a, const Subcommand& b) { return place(a) < place(b); });
  return all;
}

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

// What may stand before or after any subcommand.
struct Options {
  bool json = false;
  bool debug = false;
  Choice choice;
};

void DeclareOptions(CLI::App& app, Options& options) {
  Choice& choice = options.choice;
  app.add_flag("--json", options.json, "Write one JSON document to the standard output");
  app.add_flag("--debug", options.debug, "Write diagnostics of the connection to standard error");
  CLI::Option* const usb =
      app.add_flag("--usb", choice.usb, "Use the printers on USB instead of those on the network");
  app.add_option("--timeout", choice.timeoutMs, "Milliseconds that the search for printers waits")
      ->type_name("MS")
      ->check(Between(1, kMaxTimeoutMs))
      ->capture_default_str();
  app.add_option("--port", choice.port, "UDP port of the search")
      ->type_name("N")
      ->check(Between(1, kMaxPort));
  CLI::Option* const serial =
      app.add_option("--serial", choice.serial, "Use the printer with this serial number")
          ->type_name("S");
  CLI::Option* const address =
      app.add_option("--address", choice.address, "Use the printer at this IPv4 address")
          ->type_name("A")
          ->check(CLI::ValidIPV4);
  CLI::Option* const index =
      app.add_option("--index", choice.index, "Use the printer at this place of the list, from 0")
          ->type_name("N")
          ->check(Between(0, std::numeric_limits<int>::max()));
  serial->excludes(address)->excludes(index);
  address->excludes(index)->excludes(usb);
}

// Declares all subcommands; the one that is parsed stores its action in `chosen`.
void DeclareSubcommands(CLI::App& app, Action& chosen) {
  std::string examples = "Examples:\n";
  for (const Subcommand& row : AllSubcommands()) {
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

Report RunAction(const Action& action, Context& context) {
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
  Output output(out, err,
                std::find(arguments.begin(), arguments.end(), "--json") != arguments.end());
  try {
    CLI::App app("Finds resin 3D printers, shows what they are and do, and sends them jobs.",
                 "nuvctl");
    app.set_version_flag("--version", "nuvctl " NUVCTL_VERSION, "Show the version and leave");
    app.allow_windows_style_options(false);
    app.fallthrough();
    Options options;
    Action action;
    DeclareOptions(app, options);
    DeclareSubcommands(app, action);
    try {
      app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == 0) return app.exit(error, out, err);  // --help, --version
      throw UsageError(error, arguments);
    }
    output.SetJson(options.json);
    if (options.debug) system.SetEnvironment("NUVCONNECT_DEBUG", "1");
    Context context{options.choice, output, system};
    return output.Finish(RunAction(action, context), kDone);
  } catch (const CommandError& error) {
    return output.Fail(error);
  } catch (const std::exception& error) {
    return output.Fail(CommandError("internal", kLocalProblem,
                                    std::string("Unexpected fault: ") + error.what(),
                                    "Please report it, with what --debug shows."));
  }
}

}  // namespace NuvCtl
