#include "job/print_status_handler.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <system_error>

#include "command/commands.h"
#include "command/reply_views.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

using Platform::Diagnostic;

constexpr std::chrono::milliseconds kShortestInterval(1000);
constexpr char kPrinting[] = "1";

// What the host is told of a running print.
struct PrintingInfo {
  int totalLayers = 0;
  int layer = 0;
  int totalMinutes = 0;
  std::string jobText;
  int minutesLeft = 0;
  std::string stateText;
  std::string controller;
};

// Runs on the thread; everything in it is the thread's own or shared.
class StatusLoop {
 public:
  StatusLoop(std::shared_ptr<IChannel> channel, std::shared_ptr<JobState> state,
             Platform::Clock& clock, NuvPrintingInfoCallback callback,
             std::chrono::milliseconds interval)
      : channel_(std::move(channel)),
        state_(std::move(state)),
        clock_(clock),
        callback_(callback),
        interval_(interval) {}

  void Run() {
    const std::lock_guard<std::mutex> lock(state_->statusThread);
    // Once closed, the clock is not touched: it need not outlive a framework that the host destroys
    // inside its callback.
    while (!state_->closing.Raised() && !clock_.WaitFor(interval_, state_->closing)) Pass();
    std::fputs("PrintStatusCallBackHandler exit ...\n", stdout);
    std::fflush(stdout);
  }

 private:
  // Nothing may leave the thread: it would end the host program.
  void Pass() {
    try {
      const std::optional<PrintingInfo> info = Ask();
      if (!info || state_->closing.Raised()) return;
      callback_(info->totalLayers, info->layer, info->totalMinutes, info->jobText,
                info->minutesLeft, info->stateText, info->controller);
    } catch (const std::exception& error) {
      Diagnostic("status thread: %s", error.what());
    } catch (...) {
      Diagnostic("status thread: the printing-info callback threw");
    }
  }

  // Nothing unless a job is printing. Holds the link, but never while host code runs: a job that
  // starts waits for it.
  std::optional<PrintingInfo> Ask() {
    const std::lock_guard<std::mutex> link(state_->link);
    if (!state_->linkFree || clock_.Now() < state_->quietUntil.load()) return std::nullopt;
    if (!channel_->OpenDevice() || state_->closing.Raised()) return std::nullopt;

    const CommandRunner commands(*channel_, clock_, {}, &state_->closing);
    Command::F101Cmd identityCommand;
    const Outcome identity = commands.Run(identityCommand);
    if (identity.result != NUV_OK || identityCommand.State() != kPrinting) return std::nullopt;
    PrintingInfo info;
    // A printing printer without these is as wrong as one with a malformed number: both throw.
    info.layer = Command::ParseDecimal(identity.Text("L"), identity.code);
    info.minutesLeft = Command::ParseDecimal(identity.Text("T"), identity.code);
    info.stateText = identity.Text("R");
    info.controller = identity.Text("C");
    if (state_->closing.Raised()) return std::nullopt;

    const Outcome totals = commands.Run<Command::F107Cmd>();
    if (totals.result != NUV_OK) return std::nullopt;
    info.totalLayers = totals.Number("L");
    info.totalMinutes = totals.Number("T");
    info.jobText = totals.Text("R");
    return info;
  }

  const std::shared_ptr<IChannel> channel_;
  const std::shared_ptr<JobState> state_;
  Platform::Clock& clock_;
  const NuvPrintingInfoCallback callback_;
  const std::chrono::milliseconds interval_;
};

}  // namespace

PrintStatusHandler::PrintStatusHandler(std::shared_ptr<IChannel> channel,
                                       std::shared_ptr<JobState> state, Platform::Clock& clock)
    : channel_(std::move(channel)), state_(std::move(state)), clock_(clock) {}

PrintStatusHandler::~PrintStatusHandler() {
  state_->closing.Raise();
  if (!thread_.joinable()) return;
  if (thread_.get_id() == std::this_thread::get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

bool PrintStatusHandler::Start(NuvPrintingInfoCallback callback, uint32_t intervalMs) {
  const std::lock_guard<std::mutex> lock(starting_);
  if (callback == nullptr || thread_.joinable()) return true;
  const auto interval = std::max(kShortestInterval, std::chrono::milliseconds(intervalMs));
  auto loop = std::make_shared<StatusLoop>(channel_, state_, clock_, callback, interval);
  try {
    thread_ = std::thread([loop] { loop->Run(); });
  } catch (const std::system_error& error) {
    Diagnostic("status thread not started: %s", error.what());
    return false;
  }
  return true;
}

}  // namespace Nuv::Connect
