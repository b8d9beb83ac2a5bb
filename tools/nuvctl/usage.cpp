#include "usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>

namespace NuvCtl {
namespace {

// How many letters must be put in, left out or changed.
size_t Distance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i + 1);
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

// "; did you mean status or stats?", or nothing when none of them is near.
std::string Nearest(const CLI::App& app, const std::string& word) {
  constexpr size_t kFarthest = 2;
  size_t least = kFarthest;
  std::string words;
  for (const CLI::App* sub : app.get_subcommands([](const CLI::App*) { return true; })) {
    const size_t distance = Distance(word, sub->get_name());
    if (distance > least) continue;
    if (distance < least) words.clear();
    least = distance;
    words += (words.empty() ? "" : " or ") + sub->get_name();
  }
  return words.empty() ? words : "; did you mean " + words + "?";
}

// The innermost subcommand that was parsed.
const CLI::App& Innermost(const CLI::App& app) {
  const std::vector<CLI::App*> parsed = app.get_subcommands();
  return parsed.empty() ? app : Innermost(*parsed.front());
}

std::string HelpOf(const CLI::App& app) {
  return app.get_parent() == nullptr ? "nuvctl" : HelpOf(*app.get_parent()) + ' ' + app.get_name();
}

}  // namespace

CommandError UsageFailure(const CLI::App& app, const CLI::ParseError& error,
                          const std::vector<std::string>& arguments) {
  const CLI::App& inner = Innermost(app);
  const std::string help = "Run '" + HelpOf(inner) + " --help' for the usage.";
  const bool missing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  const std::vector<std::string> unexpected = app.remaining(true);
  const bool takesCommands = inner.get_require_subcommand_max() > 0;
  if (!unexpected.empty() && takesCommands && unexpected.front().front() != '-') {
    return UsageError("\"" + unexpected.front() + "\" is no command of " + HelpOf(inner) +
                          Nearest(inner, unexpected.front()),
                      help);
  }
  // A key may be among the arguments of wifi, given there by mistake, so they are not repeated;
  // what is missing can be told.
  const bool wifi = std::find(arguments.begin(), arguments.end(), "wifi") != arguments.end();
  if (wifi && !missing) {
    return UsageError("The arguments of 'nuvctl wifi' are wrong",
                      "Run 'nuvctl wifi --help' for the usage. A key is asked for or read from the "
                      "standard input, never given as an argument; the shell remembers those.");
  }
  if (unexpected.empty()) return UsageError(error.what(), help);
  std::string words;
  for (const std::string& word : unexpected) words += " " + word;
  const bool option = unexpected.front().front() == '-';
  return UsageError("Not expected:" + words,
                    (option ? "" : "Names with blanks need quotes. ") + help);
}

}  // namespace NuvCtl
