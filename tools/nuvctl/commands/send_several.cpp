#include "commands/send_several.h"

#include <QProcess>
#include <algorithm>
#include <memory>
#include <set>

#include "error.h"
#include "progress.h"
#include "target.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

using Json = nlohmann::ordered_json;

// One 'nuvctl send' that runs for one printer.
class Sender {
 public:
  Sender(const Context& context, std::string printer, const QStringList& options)
      : printer_(std::move(printer)) {
    process_->setReadChannel(QProcess::StandardError);
    process_->start(QString::fromStdString(context.system.Program()),
                    QStringList{"send", "--json", "--progress"} + options);
  }

  const std::string& Printer() const { return printer_; }
  bool Runs() const { return process_->state() != QProcess::NotRunning; }
  void Cancel() { process_->closeWriteChannel(); }

  // Waits for so long at most, and takes what it has told. What was meant for people.
  std::vector<std::string> Listen(int patienceMs, int64_t nowMs) {
    std::vector<std::string> remarks;
    if (!process_->canReadLine()) process_->waitForReadyRead(patienceMs);
    while (process_->canReadLine()) {
      const QByteArray line = process_->readLine().trimmed();
      const QList<QByteArray> words = line.split(' ');
      bool isNumber = false, areNumbers = false;
      const int64_t sent = words.front().toLongLong(&isNumber);
      const int64_t total = words.back().toLongLong(&areNumbers);
      if (words.size() != 2 || !isNumber || !areNumbers) {
        remarks.push_back(Printable(printer_ + ": " + line.toStdString()));
        continue;
      }
      if (startMs_ < 0 || sent < figures_.sent) startMs_ = nowMs;
      figures_ = {total, sent, nowMs - startMs_};
    }
    return remarks;
  }

  std::string Row(int width) const {
    if (!Runs()) return "ended";
    return startMs_ < 0 ? "waiting" : ProgressBar(figures_, width);
  }

  // How it ended: what 'nuvctl send --json' tells.
  const Json& Outcome() {
    if (!outcome_.is_null()) return outcome_;
    process_->setReadChannel(QProcess::StandardOutput);
    outcome_ = {{"printer", printer_}};
    const Json told = Json::parse(process_->readAll().toStdString(), nullptr, false);
    if (told.is_object()) {
      outcome_.update(told);
    } else {
      outcome_["error"] = ErrorJson(
          CommandError("internal", kLocalProblem, "its nuvctl ended without a word",
                       "The printer may still wait for the rest; 'nuvctl status' shows it."));
    }
    return outcome_;
  }

  bool Failed() { return Outcome().contains("error"); }
  bool Cancelled() { return Failed() && Outcome()["error"]["code"] == "cancelled"; }

  std::string OutcomeText() {
    const Json& outcome = Outcome();
    std::string text = printer_ + ": ";
    if (Failed()) {
      const std::string hint = outcome["error"].value("hint", "");
      text += outcome["error"].value("message", "") + "." + (hint.empty() ? "" : " " + hint);
    } else if (outcome.value("result", "") == "fit") {
      text += "the file can be sent.";
    } else {
      text += "sent, " + FormatBytes(outcome.value("bytes", int64_t{0})) + " in " +
              FormatDuration(static_cast<int64_t>(outcome.value("seconds", 0.0)));
      text += outcome.contains("job_index") ? ", job " + outcome["job_index"].dump() + "."
                                            : ". It is printing.";
    }
    return Printable(text) + '\n';
  }

 private:
  std::string printer_;
  std::unique_ptr<QProcess> process_ = std::make_unique<QProcess>();
  int64_t startMs_ = -1;  // of the first figures
  ProgressFigures figures_;
  Json outcome_;
};

QStringList Joined(const std::vector<std::string>& words) {
  QStringList joined;
  for (const std::string& word : words) joined += QString::fromStdString(word);
  return joined;
}

// What is the same for all of them.
QStringList SameArguments(const Context& context, const std::string& file,
                          const std::vector<std::string>& options) {
  std::vector<std::string> words = {"--timeout", std::to_string(context.choice.timeoutMs)};
  if (context.choice.port)
    words.insert(words.end(), {"--port", std::to_string(*context.choice.port)});
  words.insert(words.end(), options.begin(), options.end());
  words.insert(words.end(), {"--", file});
  return Joined(words);
}

void Follow(const Context& context, std::vector<Sender>& senders) {
  constexpr int kRoundMs = 200;
  const auto runs = [](const Sender& sender) { return sender.Runs(); };
  const int patienceMs = std::max(1, kRoundMs / static_cast<int>(senders.size()));
  size_t names = 0;
  for (const Sender& sender : senders) names = std::max(names, DisplayWidth(sender.Printer()));
  LiveRows rows(context.output.Err());
  const bool shown = !context.output.Json() && context.system.ErrorIsTerminal();
  const bool remarks = !context.output.Json() || qEnvironmentVariableIsSet("NUVCONNECT_DEBUG");
  bool cancelled = false;
  while (std::any_of(senders.begin(), senders.end(), runs)) {
    if (!cancelled && context.system.Interrupted()) {
      cancelled = true;
      for (Sender& sender : senders) sender.Cancel();
    }
    for (Sender& sender : senders) {
      for (const std::string& line : sender.Listen(patienceMs, context.system.NowMs())) {
        if (!remarks) continue;
        rows.Clear(context.system.ErrorWidth());
        context.output.Err() << line << '\n' << std::flush;
      }
    }
    if (!shown) continue;
    const int width = context.system.ErrorWidth();
    std::vector<std::string> lines;
    for (const Sender& sender : senders) {
      std::string head = Printable(sender.Printer());
      head += std::string(names + 2 - std::min(names, DisplayWidth(head)), ' ');
      const int left = std::max(1, width - 1 - static_cast<int>(DisplayWidth(head)));
      lines.push_back(FirstColumns(head + sender.Row(left), static_cast<size_t>(width - 1)));
    }
    rows.Draw(lines, width);
  }
  rows.Clear(context.system.ErrorWidth());
}

}  // namespace

Report SendToSeveral(const Context& context, const std::string& file,
                     const std::vector<std::string>& options) {
  const std::vector<std::string>& printers = context.choice.printers;
  if (std::set<std::string>(printers.begin(), printers.end()).size() < printers.size()) {
    throw UsageError("A printer is named twice", "Give each --printer once.");
  }
  const QStringList same = SameArguments(context, file, options);
  std::vector<Sender> senders;
  senders.reserve(printers.size());
  const std::vector<std::vector<std::string>> chosen = OptionsFor(context, printers);
  for (size_t i = 0; i < printers.size(); ++i) {
    senders.emplace_back(context, printers[i], Joined(chosen[i]) + same);
  }
  Follow(context, senders);

  Report report;
  report.json = Json::array();
  size_t failed = 0, cancelled = 0;
  for (Sender& sender : senders) {
    report.text += sender.OutcomeText();
    report.json.push_back(sender.Outcome());
    failed += sender.Failed() ? 1 : 0;
    cancelled += sender.Cancelled() ? 1 : 0;
  }
  if (failed == 0) return report;
  CommandError error(
      "some_failed", cancelled == senders.size() ? kCancelled : kSomeFailed,
      std::to_string(failed) + " of " + std::to_string(senders.size()) + " printers did not get it",
      "", report);
  error.shownIsResult = true;
  throw error;
}

}  // namespace NuvCtl
