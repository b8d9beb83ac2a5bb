#include <CLI/CLI.hpp>
#include <memory>

#include "file_job.h"
#include "subcommands.h"
#include "text.h"

namespace nuvctl {
namespace {

std::string HintAfterCancel() {
  return "The commands sent until then stay in effect; check the printer.";
}

Report RunGcode(Context& context, const std::string& name) {
  const JobFile file = OpenJobFile(name);
  OpenReadyPrinter(context, file);
  const Transfer transfer =
      RunTransfer(context, [&file] { return API_SendGCodeFile(file.path.c_str(), nullptr); });
  RequireSent(context, file, transfer, HintAfterCancel);
  Report report;
  // Printers confirm command text in no way, so there is nothing to check and nothing to promise.
  report.json = TransferJson(file, transfer, "sent");
  report.text = "Sent " + Printable(name) + ": " + TransferText(transfer) +
                ". The printer does not confirm command files.\n";
  return report;
}

}  // namespace

Action DeclareGcode(CLI::App& app) {
  const auto name = std::make_shared<std::string>();
  app.add_option("FILE", *name, "A text file, one printer command a line")
      ->required()
      ->type_name("");
  return [name](Context& context) { return RunGcode(context, *name); };
}

}  // namespace nuvctl
