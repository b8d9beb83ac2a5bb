#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <string_view>

#include "commands/commands.h"
#include "error.h"
#include "output.h"
#include "usage.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

// The help, by topic; what is not named here follows.
struct Topic {
  const char* name;
  std::vector<std::string_view> commands;
};

const std::vector<Topic>& Topics() {
  static const std::vector<Topic> kTopics = {
      {"Finding printers", {"list", "printers", "doctor"}},
      {"What a printer is and does",
       {"info", "status", "watch", "resin", "sensors", "jobs", "versions", "tank", "leds"}},
      {"Jobs and firmware", {"send", "cancel", "gcode", "firmware"}},
      {"Settings", {"nickname", "laser-power", "z-compensation", "scaling", "skip-warmup", "wifi"}},
      {"Anything else", {"raw"}}};
  return kTopics;
}

Subcommands AllSubcommands() {
  constexpr Subcommands (*kSources[])() = {DeviceCommands,   DoctorCommands,      IdentityCommands,
                                           ResinCommands,    SettingsCommands,    NetworkCommands,
                                           HistoryCommands,  LightEngineCommands, JobCommands,
                                           FirmwareCommands, RawCommands};
  Subcommands all;
  for (const auto source : kSources) {
    for (const Subcommand& row : source()) all.push_back(row);
  }
  return all;
}

constexpr char kFooter[] =
    "Without --printer, --serial, --address or --index the only printer found is used.\n"
    "\n"
    "Exit codes:\n"
    "  0    done\n"
    "  1    the printer refused, failed, lacks what was asked for or did not take the job\n"
    "  2    wrong usage\n"
    "  3    no printer found, or several and none chosen\n"
    "  4    the file cannot be read or is damaged\n"
    "  5    the printer did not answer or could not be opened\n"
    "  6    a problem of this computer: a library is missing, output cannot be written\n"
    "  7    of several printers some failed\n"
    "  8    the file is not fit for the printer\n"
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
  app.add_flag("--yes", choice.yes, "Do what would be asked about");
  CLI::Option* const usb = app.add_flag("--usb", choice.usb, "Look for printers on USB only");
  app.add_option("--timeout", choice.timeoutMs,
                 "Milliseconds to wait for a printer's answer; a search takes 3000 of them at most")
      ->type_name("MS")
      ->check(Between(1, kMaxTimeoutMs))
      ->capture_default_str();
  app.add_option("--port", choice.port, "UDP port of the search")
      ->type_name("N")
      ->check(Between(1, kMaxPort));
  std::vector<CLI::Option*> choices = {
      app.add_option("--printer", choice.printers,
                     "Use the printer of this name or nickname, or whose serial number ends so")
          ->type_name("NAME")
          ->allow_extra_args(false),
      app.add_option("--serial", choice.serial,
                     "Use the printer whose serial number is, or ends, so")
          ->type_name("S"),
      app.add_option("--address", choice.address,
                     "Use the printer at this IPv4 address or host name; :N behind it is the port "
                     "of the search")
          ->type_name("A"),
      app.add_option("--index", choice.index, "Use the printer at this place of the list, from 0")
          ->type_name("N")
          ->check(Between(0, std::numeric_limits<int>::max()))};
  for (size_t i = 0; i < choices.size(); ++i) {
    for (size_t j = i + 1; j < choices.size(); ++j) choices[i]->excludes(choices[j]);
  }
  choices[2]->excludes(usb);
}

// `nuvctl printers add` takes both.
void RequireAddress(const Choice& choice) {
  if (!choice.address) return;
  const std::string& text = *choice.address;
  const bool plain = std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
           c == '-' || c == '_' || c == ':';
  });
  const size_t colon = text.find(':');
  const std::string port = colon == std::string::npos ? "1" : text.substr(colon + 1);
  const bool number = !port.empty() && port.find_first_not_of("0123456789") == std::string::npos;
  if (plain && number && colon != 0 && !text.empty()) return;
  throw UsageError("\"" + text + "\" is no address of a printer",
                   "Give an IPv4 address or a host name, such as 10.0.5.7 or lab-one.local.");
}

// Declares all subcommands; the one that is parsed stores its action in `chosen`.
void DeclareSubcommands(CLI::App& app, Action& chosen) {
  std::string examples = "Examples:\n";
  const Subcommands all = AllSubcommands();
  for (const Topic& topic : Topics()) {
    for (const std::string_view name : topic.commands) {
      const auto row = std::find_if(all.begin(), all.end(),
                                    [&](const Subcommand& one) { return name == one.name; });
      CLI::App* const sub = app.add_subcommand(row->name, row->summary);
      sub->group(topic.name);
      sub->footer(std::string("Example:\n  ") + row->example +
                  "\n\nThe options of 'nuvctl --help' may stand here too.");
      const Action action = row->declare(*sub);
      sub->callback([&chosen, action] { chosen = action; });
      examples += std::string("  ") + row->example + '\n';
    }
  }
  app.require_subcommand(1);
  app.footer(examples + '\n' + kFooter);
}

// "help send" is "send --help".
std::vector<std::string> WithHelp(std::vector<std::string> arguments) {
  if (arguments.empty() || arguments.front() != "help") return arguments;
  arguments.erase(arguments.begin());
  arguments.emplace_back("--help");
  return arguments;
}

// While it lives, what the library has to say goes to standard error.
class DebugLog {
 public:
  DebugLog(bool wanted, std::ostream& err) {
    if (!wanted && std::getenv("NUVCONNECT_DEBUG") == nullptr) return;
    const auto mutex = std::make_shared<std::mutex>();
    nuv::SetLog(nuv::LogLevel::kWarning, [&err, mutex](nuv::LogLevel, const std::string& printer,
                                                       const std::string& text) {
      const std::lock_guard<std::mutex> lock(*mutex);
      err << "nuvctl: " << (printer.empty() ? "" : printer + ": ") << Printable(text) << std::endl;
    });
  }
  ~DebugLog() { nuv::SetLog(nuv::LogLevel::kWarning, nullptr); }
  DebugLog(const DebugLog&) = delete;
  DebugLog& operator=(const DebugLog&) = delete;
};

// While it lives, Ctrl-C ends what is under way instead of the process.
class Interruptible {
 public:
  explicit Interruptible(System& system) : system_(system) { system_.WatchInterrupts(true); }
  ~Interruptible() { system_.WatchInterrupts(false); }
  Interruptible(const Interruptible&) = delete;
  Interruptible& operator=(const Interruptible&) = delete;

 private:
  System& system_;
};

}  // namespace

int RunCommandLine(const std::vector<std::string>& given, std::ostream& out, std::ostream& err,
                   System& system) {
  const std::vector<std::string> arguments = WithHelp(given);
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
      throw UsageFailure(app, error, arguments);
    }
    output.SetJson(options.json);
    RequireAddress(options.choice);
    const DebugLog log(options.debug, err);
    if (options.debug) system.SetEnvironment("NUVCONNECT_DEBUG", "1");  // of processes of its own
    const Interruptible interruptible(system);
    return output.Finish(action(Context{options.choice, output, system}), kDone);
  } catch (const CommandError& error) {
    return output.Fail(error);
  } catch (const std::exception& error) {
    return output.Fail(CommandError("internal", kLocalProblem,
                                    std::string("Unexpected fault: ") + error.what(),
                                    "Please report it, with what --debug shows."));
  }
}

}  // namespace NuvCtl
