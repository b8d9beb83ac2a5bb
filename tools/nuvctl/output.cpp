#include "output.h"

#include "error.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

void WriteDocument(const nlohmann::ordered_json& document, int indent, std::ostream& out) {
  // ASCII only, so that a printer's control characters never reach a terminal this way either.
  out << document.dump(indent, ' ', true, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

}  // namespace

nlohmann::ordered_json ErrorJson(const CommandError& error) {
  nlohmann::ordered_json told = {
      {"code", error.code}, {"message", error.message}, {"hint", error.hint}};
  if (error.result) told["result"] = static_cast<int>(*error.result);
  return told;
}

void FieldReport::Add(const std::string& label, const std::string& text, const std::string& key,
                      nlohmann::ordered_json value) {
  fields_.emplace_back(label, text);
  json_[nlohmann::ordered_json::json_pointer('/' + key)] = std::move(value);
}

void FieldReport::AddText(const std::string& label, const std::string& key,
                          const std::optional<std::string>& text) {
  if (text) Add(label, *text, key, *text);
}

void FieldReport::AddNumber(const std::string& label, const std::string& key,
                            std::optional<int> number, const std::string& unit) {
  if (number) Add(label, std::to_string(*number) + unit, key, *number);
}

void FieldReport::AddFlag(const std::string& label, const std::string& key,
                          std::optional<bool> flag) {
  if (flag) Add(label, *flag ? "yes" : "no", key, *flag);
}

Report FieldReport::Finish() const { return {FormatFields(fields_), json_}; }

void Output::Remark(const std::string& line) {
  if (!json_ || tellsProgress_) err_ << line << '\n' << std::flush;
}

void Output::Stream(const Report& piece) {
  streams_ = true;
  if (Finish(piece, kDone) != kDone) {
    throw CommandError("output", kLocalProblem, "What was found out cannot be shown", "");
  }
}

int Output::Finish(const Report& report, int exit) {
  if (!json_) {
    out_ << report.text;
  } else if (!streams_) {
    WriteDocument(report.json.is_null() ? nlohmann::ordered_json::object() : report.json, 2, out_);
  } else if (!report.json.is_null()) {
    WriteDocument(report.json, -1, out_);
  }
  out_.flush();
  if (out_) return exit;
  err_ << "nuvctl: the output could not be written\n";
  return exit == kDone ? kLocalProblem : exit;
}

int Output::Fail(const CommandError& error) {
  Report report = error.shown;
  if (!json_ && !error.shownIsResult) report.text.clear();
  if (!report.json.is_array())
    report.json["error"] = ErrorJson(error);  // of several each row has its own
  const int exit = Finish(report, error.exit);
  if (json_) return exit;
  err_ << "nuvctl: " << Printable(error.message) << (error.message.back() == '?' ? "\n" : ".\n");
  if (!error.shownIsResult) err_ << error.shown.text;
  if (!error.hint.empty()) err_ << Printable(error.hint) << '\n';
  err_.flush();
  return exit;
}

}  // namespace NuvCtl
