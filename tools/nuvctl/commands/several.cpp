#include "commands/several.h"

#include <CLI/CLI.hpp>

namespace NuvCtl {

Report AskAll(const Context& context, const TableRow& head, const Errand& errand) {
  const Listing listing = ListPrinters(context, errand);
  Report report;
  report.json = nlohmann::ordered_json::array();
  std::vector<TableRow> rows;
  size_t failed = 0;
  for (size_t i = 0; i < listing.size(); ++i) {
    const Listed& printer = listing[i];
    const Answer& answer = printer.answer;
    nlohmann::ordered_json json = ListedJson(printer, i);
    TableRow row = {printer.Name(), AddressText(printer.who)};
    if (answer.failure) {
      ++failed;
      json["error"] = ErrorJson(*answer.failure);
      const bool silent = printer.who.contact != nuv::Result::kOk;
      row.push_back(silent ? ContactText(printer.who.contact) : answer.failure->message);
    } else {
      json.update(answer.json);
      row.insert(row.end(), answer.cells.begin(), answer.cells.end());
    }
    report.json.push_back(json);
    rows.push_back(row);
  }
  TableRow whole = {"PRINTER", "ADDRESS"};
  whole.insert(whole.end(), head.begin(), head.end());
  report.text = FormatTable(whole, rows);
  if (failed == 0) return report;
  CommandError error(
      "some_failed", kSomeFailed,
      std::to_string(failed) + " of " + std::to_string(listing.size()) + " printers did not tell",
      "", report);
  error.shownIsResult = true;
  throw error;
}

Action DeclareAll(CLI::App& app, Report (*one)(const Context&), const TableRow& head,
                  const Errand& errand) {
  const auto all = std::make_shared<bool>(false);
  app.add_flag("--all", *all, "All printers, known and found, a row each");
  return
      [=](const Context& context) { return *all ? AskAll(context, head, errand) : one(context); };
}

}  // namespace NuvCtl
