#include "watching.h"

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <memory>
#include <mutex>

#include "progress.h"
#include "state.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

using nuv::Event;
using nuv::EventKind;
using nuv::PrinterState;

constexpr size_t kUsualText = 54;

// What the watches tell, on threads of the library, for the one that shows it.
class Events {
 public:
  void Add(size_t who, const Event& event) {
    const std::lock_guard<std::mutex> lock(mutex_);
    events_.emplace_back(who, event);
    changed_.notify_one();
  }
  std::optional<std::pair<size_t, Event>> Next(std::chrono::milliseconds patience) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, patience, [this] { return !events_.empty(); });
    if (events_.empty()) return std::nullopt;
    const auto next = events_.front();
    events_.pop_front();
    return next;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<size_t, Event>> events_;
};

// One printer that is followed: what is known of it, and how it ended.
class Followed {
 public:
  Followed(std::string name, int64_t now, const WatchOptions& options)
      : name_(std::move(name)), options_(options), lastAnswerMs_(now) {}

  const std::string& Name() const { return name_; }
  bool Ended() const { return ended_; }
  const std::optional<CommandError>& Failure() const { return failure_; }
  const std::string& Outcome() const { return outcome_; }

  void Take(const Event& event, int64_t nowMs) {
    if (ended_) return;
    if (event.kind == EventKind::kSilent || event.kind == EventKind::kGone) {
      return Misses(event, nowMs);
    }
    lastAnswerMs_ = nowMs;
    missing_ = false;
    if (event.job) layers_ = event.job->layers;
    if (event.kind == EventKind::kPrintEnded) return EndsPrint(event);
    state_ = *event.state;
    text_ = StateText(*state_, layers_);
    json_ = StateJson(*state_, layers_);
    switch (state_->state) {
      case PrinterState::kPrinting:
        percent_ = state_->percent;
        [[fallthrough]];
      case PrinterState::kReceiving:
        return;
      case PrinterState::kError:
        return Fail("printer_error", kPrinterFailed,
                    "The printer reports error " + std::to_string(state_->errorNumber.value_or(0)),
                    "Look at the printer's panel.");
      default:
        return End("idle");
    }
  }

  // `width`: of a terminal; 0: without a bar.
  std::string Row(int width) const {
    std::string text = Printable(text_);
    if (width <= 0) return text;
    const bool prints = state_ && state_->state == PrinterState::kPrinting && !missing_;
    if (!prints) return FirstColumns(text, static_cast<size_t>(width));
    return Bar(percent_.value_or(0), "  ", text, kUsualText, width);
  }
  const std::string& Text() const { return text_; }
  const nlohmann::ordered_json& Json() const { return json_; }

 private:
  void Misses(const Event& event, int64_t nowMs) {
    constexpr int64_t kMsPerMinute = 60000;
    missing_ = true;
    text_ = event.kind == EventKind::kGone ? "out of reach" : "no answer";
    if (event.lastAnswer) text_ += " since " + TimeText(*event.lastAnswer);
    json_ = {{"state", event.kind == EventKind::kGone ? "gone" : "silent"}};
    if (nowMs - lastAnswerMs_ < options_.giveUpMinutes * kMsPerMinute) return;
    Fail("no_answer", kConnectionProblem,
         "The printer has not answered for " + std::to_string(options_.giveUpMinutes) + " minutes",
         "Check that it is on; --give-up sets how long nuvctl waits.");
  }

  void EndsPrint(const Event& event) {
    const std::string last = percent_ ? std::to_string(*percent_) + " %" : "a point not known";
    json_ = event.state ? StateJson(*event.state, layers_) : nlohmann::ordered_json::object();
    if (!event.jobResult || event.jobResult == nuv::JobResult::kNotEnded) {
      text_ = "ended at " + last + ", cause not known";
      json_["ended"] = nullptr;
      return End("ended");
    }
    const std::string how = JobResultName(*event.jobResult);
    json_["ended"] = how;
    text_ = how;
    if (event.jobResult == nuv::JobResult::kFinished) return End(how);
    text_ += " at " + last;
    Fail("print_" + how, kPrinterFailed, "The print was not finished: " + how + " at " + last,
         "Look at the printer's panel; 'nuvctl jobs' shows the history.");
    outcome_ = how;
  }

  void End(const std::string& outcome) {
    ended_ = true;
    missing_ = false;
    state_.reset();
    outcome_ = outcome;
  }

  void Fail(const std::string& code, ExitCode exit, const std::string& message,
            const std::string& hint) {
    End(code);
    failure_ = CommandError(code, exit, message, hint);
  }

  std::string name_;
  const WatchOptions& options_;
  int64_t lastAnswerMs_;
  std::optional<nuv::State> state_;  // of a print that goes on
  std::optional<int> layers_, percent_;
  bool missing_ = false, ended_ = false;
  std::string text_ = "looking", outcome_;
  nlohmann::ordered_json json_;
  std::optional<CommandError> failure_;
};

// Shows each as it changes, until all have ended.
class Show {
 public:
  Show(const Context& context, std::vector<Followed>& all)
      : context_(context),
        all_(all),
        live_(!context.output.Json() && context.system.OutputIsTerminal()),
        rows_(context.output.Out()) {}
  ~Show() { rows_.Finish(); }
  Show(const Show&) = delete;
  Show& operator=(const Show&) = delete;

  void Run(Events& events) {
    constexpr std::chrono::milliseconds kMoment(200);
    while (!AllEnded()) {
      if (context_.system.Interrupted()) {
        throw CommandError("cancelled", kCancelled, "Not followed any more; what prints goes on",
                           "");
      }
      const auto next = events.Next(kMoment);
      if (!next) continue;
      Followed& one = all_[next->first];
      const std::string before = one.Text();
      one.Take(next->second, context_.system.NowMs());
      if (one.Text() != before) Changed(one);
    }
  }

  void Changed(const Followed& one) {
    const bool named = all_.size() > 1;
    if (!live_) {
      nlohmann::ordered_json json = one.Json();
      if (named) json["printer"] = one.Name();
      return context_.output.Stream(
          {(named ? Printable(one.Name()) + ": " : "") + Printable(one.Text()) + '\n', json});
    }
    const int width = context_.system.OutputWidth();
    size_t names = 0;
    for (const Followed& each : all_) names = std::max(names, DisplayWidth(Printable(each.Name())));
    std::vector<std::string> rows;
    for (const Followed& each : all_) {
      std::string head;
      if (named) {
        head = Printable(each.Name());
        head += std::string(names - DisplayWidth(head) + 2, ' ');
      }
      const int left = std::max(1, width - 1 - static_cast<int>(DisplayWidth(head)));
      rows.push_back(FirstColumns(head + each.Row(left), static_cast<size_t>(width - 1)));
    }
    rows_.Draw(rows, width);
  }

 private:
  bool AllEnded() const {
    for (const Followed& one : all_) {
      if (!one.Ended()) return false;
    }
    return true;
  }

  const Context& context_;
  std::vector<Followed>& all_;
  const bool live_;
  LiveRows rows_;
};

std::function<bool(const Event&)> Into(const std::shared_ptr<Events>& events, size_t who) {
  return [events, who](const Event& event) {
    events->Add(who, event);
    return true;
  };
}

// What comes from outside must not become a part of a command.
std::string Harmless(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    const bool is = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                    c == ' ' || c == '.' || c == '_' || c == '-';
    safe += is ? c : '_';
  }
  return safe;
}

void RunThen(const Context& context, const WatchOptions& options, const Followed& one) {
  if (options.then.empty()) return;
  context.system.SetEnvironment("NUVCTL_OUTCOME", Harmless(one.Outcome()).c_str());
  context.system.SetEnvironment("NUVCTL_PRINTER", Harmless(one.Name()).c_str());
  if (std::system(options.then.c_str()) != 0) {
    context.output.Remark("nuvctl: the command of --then failed");
  }
}

}  // namespace

void WatchPrint(const Context& context, Target& target, const WatchOptions& options) {
  const auto events = std::make_shared<Events>();
  std::vector<Followed> one;
  one.emplace_back(target.Name(), context.system.NowMs(), options);
  {
    Show show(context, one);
    const nuv::Watch watch = Asked("Watching", [&] {
      return target.Printer().Watch(std::chrono::milliseconds(options.intervalMs), Into(events, 0));
    });
    show.Run(*events);
  }
  RunThen(context, options, one.front());
  if (one.front().Failure()) throw CommandError(*one.front().Failure());
}

void WatchAll(const Context& context, const WatchOptions& options) {
  const auto events = std::make_shared<Events>();
  std::vector<nuv::Printer> printers;
  std::vector<nuv::Watch> watches;
  std::vector<Followed> all;
  bool failed = false;
  for (const Listed& printer : ListPrinters(context)) {
    try {
      printers.push_back(nuv::Printer::Open(printer.who, context.Call(printer.Name())));
      all.emplace_back(printer.Name(), context.system.NowMs(), options);
    } catch (const nuv::Error& error) {
      failed = true;
      context.output.Remark(Printable(printer.Name()) + ": " + ContactText(error.Reason()));
    }
  }
  {
    Show show(context, all);
    for (size_t i = 0; i < printers.size(); ++i) {
      watches.push_back(
          printers[i].Watch(std::chrono::milliseconds(options.intervalMs), Into(events, i)));
    }
    show.Run(*events);
  }
  for (const Followed& one : all) {
    RunThen(context, options, one);
    failed = failed || one.Failure();
  }
  if (failed) {
    throw CommandError("some_failed", kSomeFailed, "Not every printer ended well",
                       "The rows above say which.");
  }
}

}  // namespace NuvCtl
