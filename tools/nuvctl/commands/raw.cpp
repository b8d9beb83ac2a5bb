#include <CLI/CLI.hpp>
#include <memory>

#include "commands/commands.h"
#include "error.h"
#include "library.h"
#include "printer.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

// One command line as the printer wants it, CR LF at its end. Throws when it is not exactly one:
// the reply to a second one would be taken for the reply to the next request.
std::string RequestLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  if (text.empty() || text.find_first_of("\r\n") != std::string::npos) {
    throw CommandError("usage", kUsage, "The text is not exactly one command",
                       "Give one command, such as \"F101\"; the line end is added.");
  }
  return text + "\r\n";
}

Report RunRaw(Context& context, const std::string& text) {
  const std::string request = RequestLine(text);
  OpenPrinter(context.choice);
  TextBuffer buffer;
  Check(API_NUVCONNECT_ExecutiveCommand(request.c_str(), buffer.Data(), NUV_TEXT_BYTES - 1),
        "Sending the command");
  std::string reply = buffer.Text();
  if (!reply.empty() && reply.back() == '\r') reply.pop_back();
  if (reply.empty()) {
    throw CommandError("no_answer", kConnectionProblem, "The printer did not answer the command",
                       "Not every command has a reply. Check with 'nuvctl status' that the "
                       "printer still answers.");
  }
  Report report;
  report.json = {{"command", request.substr(0, request.size() - 2)}, {"reply", reply}};
  report.text = Printable(reply) + '\n';
  return report;
}

Action DeclareRaw(CLI::App& app) {
  const auto text = std::make_shared<std::string>();
  app.add_option("TEXT", *text, "The command, such as \"F101\"")->required()->type_name("");
  return [text](Context& context) { return RunRaw(context, *text); };
}

}  // namespace

Subcommands RawCommands() {
  return {{"raw", "Send one command and show the reply", "nuvctl raw \"F101\"", DeclareRaw}};
}

}  // namespace NuvCtl
