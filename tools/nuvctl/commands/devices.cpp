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
    CLI::App* const sub = app.add_subcommand(name, summary);
    sub->callback(
        [=] { *chosen = [=](const Context& context) { return run(context, *options); }; });
    sub->add_option("NAME", options->name)->required()->type_name("");
    return sub;
  };
  CLI::App* const list = app.add_subcommand("list", "List the printers that have a name");
  list->callback([=] { *chosen = [](const Context&) { return KnownReport(LoadKnown()); }; });
  declare("add", "Give the printer at --address, or of --serial, a name", RunAdd)
      ->add_flag("--replace", options->replace, "Also when the name is taken");
  declare("remove", "Forget a name", RunRemove);
  declare("rename", "Change a name", RunRename)
      ->add_option("NEW", options->newName, "The new name")
      ->required()
      ->type_name("");
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
