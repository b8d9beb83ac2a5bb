#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "commands/commands.h"
#include "error.h"
#include "format.h"
#include "known_printers.h"
#include "listing.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

Report RunList(const Context& context) { return ListingReport(ListPrinters(context)); }

// ---- Known printers

constexpr size_t kLongestName = 64;  // bytes

struct NamedOptions {
  std::string name;
  std::string newName;
  bool replace = false;
  bool names = false;
};

void RequireName(const std::string& name) {
  const bool blank = name.find_first_not_of(' ') == std::string::npos;
  if (!blank && name.size() <= kLongestName && Printable(name) == name) return;
  throw UsageError("\"" + name + "\" is no name for a printer",
                   "A name has 1 to 64 bytes of UTF-8, without control characters.");
}

auto Find(KnownPrinters& printers, const std::string& name) {
  return std::find_if(printers.begin(), printers.end(),
                      [&](const KnownPrinter& one) { return one.name == name; });
}

auto Require(KnownPrinters& printers, const std::string& name) {
  const auto found = Find(printers, name);
  if (found == printers.end()) {
    throw CommandError("no_printer", kNoPrinter, "No printer is known as \"" + name + "\"",
                       "'nuvctl printers list' shows those that are.");
  }
  return found;
}

CommandError Taken(const std::string& name, const std::string& hint) {
  return UsageError("A printer is known as \"" + name + "\" already", hint);
}

Report KnownReport(const KnownPrinters& printers) {
  Report report;
  report.json["printers"] = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  for (const KnownPrinter& printer : printers) {
    report.json["printers"].push_back(
        {{"name", printer.name}, {"address", printer.address}, {"serial", printer.serial}});
    rows.push_back({printer.name, printer.address, printer.serial});
  }
  report.text = rows.empty() ? "No printer is known; 'nuvctl printers add' gives one a name.\n"
                             : FormatTable({"NAME", "ADDRESS", "SERIAL"}, rows);
  return report;
}

Report RunKnown(const Context&, const NamedOptions& options) {
  Report report = KnownReport(LoadKnown());
  if (!options.names) return report;
  report.text.clear();
  for (const auto& printer : report.json["printers"]) {
    report.text += printer["name"].get<std::string>() + '\n';
  }
  return report;
}

Report RunAdd(const Context& context, const NamedOptions& options) {
  RequireName(options.name);
  const KnownPrinter printer = {options.name, context.choice.address.value_or(""),
                                context.choice.serial.value_or("")};
  if (printer.address.empty() && printer.serial.empty()) {
    throw UsageError("Where the printer is, is missing", "Give --address or --serial.");
  }
  ChangeKnown([&](KnownPrinters& printers) {
    const auto old = Find(printers, options.name);
    if (old == printers.end()) {
      printers.push_back(printer);
    } else if (options.replace) {
      *old = printer;
    } else {
      throw Taken(options.name, "--replace forgets that one.");
    }
  });
  return KnownReport({printer});
}

Report RunRemove(const Context&, const NamedOptions& options) {
  ChangeKnown([&](KnownPrinters& printers) { printers.erase(Require(printers, options.name)); });
  return KnownReport(LoadKnown());
}

Report RunRename(const Context&, const NamedOptions& options) {
  RequireName(options.newName);
  ChangeKnown([&](KnownPrinters& printers) {
    const auto printer = Require(printers, options.name);
    if (options.newName == options.name) return;
    if (Find(printers, options.newName) != printers.end()) {
      throw Taken(options.newName, "Remove that one first.");
    }
    printer->name = options.newName;
  });
  return KnownReport(LoadKnown());
}

Action DeclarePrinters(CLI::App& app) {
  const auto chosen = std::make_shared<Action>();
  const auto options = std::make_shared<NamedOptions>();
  const auto declare = [&](const char* name, const char* summary,
                           Report (*run)(const Context&, const NamedOptions&)) {
    CLI::App* const sub = app.add_subcommand(name, summary)->group("Subcommands");
    sub->callback(
        [=] { *chosen = [=](const Context& context) { return run(context, *options); }; });
    return sub;
  };
  const auto takes = [](CLI::App* sub, const char* what, std::string& value, const char* help) {
    sub->add_option(what, value, help)->required()->type_name("");
    return sub;
  };
  declare("list", "List the printers that have a name", RunKnown)
      ->add_flag("--names", options->names, "Only the names, one a line");
  takes(declare("add", "Give the printer at --address, or of --serial, a name", RunAdd), "NAME",
        options->name, "The name")
      ->add_flag("--replace", options->replace, "Also when the name is taken");
  takes(declare("remove", "Forget a name", RunRemove), "KNOWN", options->name, "Its name");
  takes(takes(declare("rename", "Change a name", RunRename), "KNOWN", options->name, "Its name"),
        "NEW", options->newName, "The new name");
  app.require_subcommand(1);
  return [chosen](const Context& context) { return (*chosen)(context); };
}

}  // namespace

Subcommands DeviceCommands() {
  return {{"list", "List the printers that are known or found", "nuvctl list", Plain<RunList>},
          {"printers", "Give printers names, which --printer takes",
           "nuvctl printers add lab-one --address 10.0.5.7", DeclarePrinters}};
}

}  // namespace NuvCtl
