#include <CLI/CLI.hpp>
#include <memory>

#include "commands/commands.h"
#include "target.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

// One command. Throws when it is not exactly one: the reply to a second one would be taken for the
// reply to the next request.
std::string RequestLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  if (text.empty() || text.find_first_of("\r\n") != std::string::npos) {
    throw UsageError("The text is not exactly one command",
                     "Give one command, such as \"F101\"; the line end is added.");
  }
  return text;
}

Report RunRaw(const Context& context, const std::string& text) {
  const std::string request = RequestLine(text);
  Target target = OpenTarget(context);
  std::string reply =
      target.Ask("Sending the command", &nuv::Printer::Raw, std::optional<std::string>(request));
  if (!reply.empty() && reply.back() == '\r') reply.pop_back();
  return {Printable(reply) + '\n', {{"command", request}, {"reply", reply}}};
}

Action DeclareRaw(CLI::App& app) {
  const auto text = std::make_shared<std::string>();
  app.add_option("TEXT", *text, "The command, such as \"F101\"")->required()->type_name("");
  return [text](const Context& context) { return RunRaw(context, *text); };
}

}  // namespace

Subcommands RawCommands() {
  return {{"raw", "Send one command and show the reply", "nuvctl raw \"F101\"", DeclareRaw}};
}

}  // namespace NuvCtl
