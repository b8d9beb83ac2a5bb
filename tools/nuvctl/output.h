// What a subcommand has to say, once for people and once for scripts, and the streams it goes to.
#ifndef NUVCTL_OUTPUT_H_
#define NUVCTL_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>

#include "format.h"

namespace NuvCtl {

struct CommandError;

// Subcommands return this instead of writing to the standard output, which is how --json can
// promise exactly one document there; those that go on and on stream it piece by piece.
struct Report {
  std::string text;             // whole lines, safe for a terminal
  nlohmann::ordered_json json;  // an object, of several printers an array, or null: nothing to say
};

// Units that are not ASCII, in UTF-8, each after the blank that parts it from its number.
constexpr char kCelsius[] =
    " \xC2\xB0"
    "C";
constexpr char kMicrometres[] = " \xC2\xB5m";

// A report of single values. `label` is what people read, `key` what scripts do; "sensors/tank" is
// the key `tank` of the object `sensors`.
class FieldReport {
 public:
  void Add(const std::string& label, const std::string& text, const std::string& key,
           nlohmann::ordered_json value);
  // What the printer has not told is left out.
  void AddText(const std::string& label, const std::string& key,
               const std::optional<std::string>& text);
  // `unit`: for people only, with a blank before it.
  void AddNumber(const std::string& label, const std::string& key, std::optional<int> number,
                 const std::string& unit = std::string());
  void AddFlag(const std::string& label, const std::string& key, std::optional<bool> flag);

  Report Finish() const;

 private:
  Fields fields_;
  nlohmann::ordered_json json_ = nlohmann::ordered_json::object();
};

// What scripts are told of a failure.
nlohmann::ordered_json ErrorJson(const CommandError& error);

// The two streams of one run. Results go to the standard output, messages for people and progress
// to standard error.
class Output {
 public:
  // `json`: scripts read it.
  Output(std::ostream& out, std::ostream& err, bool json) : out_(out), err_(err), json_(json) {}

  bool Json() const { return json_; }
  void SetJson(bool json) { json_ = json; }

  // Whether a program that started this one reads the progress from standard error.
  bool TellsProgress() const { return tellsProgress_; }
  void TellProgress() { tellsProgress_ = true; }

  // For rows that are written over. Not for scripts.
  std::ostream& Out() { return out_; }
  std::ostream& Err() { return err_; }

  // A whole line on standard error, for people: not for scripts, but for a program that shows it.
  void Remark(const std::string& line);

  // Writes one piece of an answer that comes while the subcommand runs: the text, or the document
  // as one line. What ends the run is a piece too from then on.
  void Stream(const Report& piece);

  // What ends the run. Both return the exit code, which is not `exit` or the error's when it was
  // success but could not be written.
  int Finish(const Report& report, int exit);
  int Fail(const CommandError& error);

 private:
  std::ostream& out_;
  std::ostream& err_;
  bool json_;
  bool streams_ = false;
  bool tellsProgress_ = false;
};

}  // namespace NuvCtl

#endif  // NUVCTL_OUTPUT_H_
