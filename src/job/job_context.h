// What jobs work with and share: the host's callbacks, the state of jobs, the right to run one.
#ifndef NUV_JOB_JOB_CONTEXT_H_
#define NUV_JOB_JOB_CONTEXT_H_

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <mutex>
#include <string>

#include "command/command_runner.h"
#include "job/print_file_library.h"
#include "nuvconnect/Callbacks.h"
#include "platform/clock.h"
#include "platform/diagnostics.h"
#include "platform/interrupt.h"

namespace Nuv::Connect {

// ---- Host code. What it throws passes through the library unchanged; a mark of the thread tells
// it from the library's own exceptions.

// Whether the last call of host code on this thread was left by an exception.
inline bool& HostThrew() {
  thread_local bool threw = false;
  return threw;
}

template <class Callback, class... Arguments>
auto CallHost(Callback callback, Arguments... arguments) {
  struct Mark {
    ~Mark() { HostThrew() = std::uncaught_exceptions() > before; }
    const int before = std::uncaught_exceptions();
  };
  const Mark mark;
  return callback(arguments...);
}

// Whoever has a job sent: is told how it goes, and asked whether to go on, on the job's thread.
class IJobHost {
 public:
  virtual ~IJobHost() = default;
  virtual void ReportError(int result, int code) = 0;
  virtual void ReportStart() = 0;
  virtual void ReportSent(int total, int sent) = 0;
  virtual bool IsCancelled() = 0;

  // The command that opens the job is sent next: from now on the printer may have it open.
  virtual void ReportOpening() {}
  // One more pass of waiting for room in the printer.
  virtual void ReportWaiting() {}
  // The printer was ordered to abandon a job that can be interrupted.
  virtual void ReportAbandoned(bool /*accepted*/) {}
};

// The host's callbacks; null until registered. Each may be replaced while another thread calls it.
class HostCallbacks final : public IJobHost {
 public:
  std::atomic<NuvErrorCodeCallback> errorCode{nullptr};
  std::atomic<NuvSendDataStartCallback> sendStart{nullptr};
  std::atomic<NuvSendDataUpdateCallback> sendUpdate{nullptr};
  std::atomic<NuvSendDataCancelCallback> sendCancel{nullptr};

  void ReportError(int result, int code) override;
  void ReportStart() override;
  void ReportSent(int total, int sent) override;
  bool IsCancelled() override;
};

// What the framework keeps of jobs, and shares with its status thread.
struct JobState {
  std::string machineId;             // of the last loaded print file; decides free-buffer queries
  uint64_t freeBuffer = 0;           // estimate of the printer's free receive buffer, in bytes
  std::atomic<bool> linkFree{true};  // false while job or firmware data is streamed
  std::atomic<bool> jobRunning{false};  // the lines of two jobs would mix on the wire
  std::atomic<std::chrono::nanoseconds> quietUntil{};  // the status thread sends nothing before
  std::mutex link;              // held by the status thread while it talks to the printer
  std::mutex statusThread;      // held by the status thread for its whole life
  Platform::Interrupt closing;  // raised by Close
};

// All that a job works with; every part outlives it.
struct JobContext {
  IChannel& channel;
  Platform::Clock& clock;
  IPrintFileLibrary& printFiles;
  IJobHost& host;
  JobState& state;
  // Raised: the waits for the printer end, and the job at the end of a line; may be null.
  Platform::Interrupt* interrupt = nullptr;

  bool Interrupted() const { return interrupt != nullptr && interrupt->Raised(); }

  void Pause(std::chrono::milliseconds duration) const {
    if (interrupt == nullptr) return clock.SleepFor(duration);
    clock.WaitFor(duration, *interrupt);
  }

  // Runs a job's commands; the host is told what became of a failed one.
  CommandRunner Commands() const {
    return {channel, clock,
            [&host = host](ConnectError error, int code) { host.ReportError(error, code); },
            interrupt};
  }
};

// The right to run the one job at a time of those that share `running`.
class JobClaim {
 public:
  explicit JobClaim(std::atomic<bool>& running)
      : running_(running), held_(!running.exchange(true)) {
    if (!held_) Platform::Diagnostic("job refused: another one is running");
  }
  ~JobClaim() {
    if (held_) running_ = false;
  }
  JobClaim(const JobClaim&) = delete;
  JobClaim& operator=(const JobClaim&) = delete;

  bool Held() const { return held_; }

 private:
  std::atomic<bool>& running_;
  bool held_;
};

// Keeps the status thread off the link while it lives, and tells the channel of the stream; whoever
// makes one holds the JobClaim and makes no second one, whose end would free the link. Waits for
// the queries that the thread is in the middle of: one of them would go into the stream, and its
// new connection would end what the printer is taking.
class LinkClaim {
 public:
  LinkClaim(const JobContext& context, JobKind kind)
      : state_(context.state), channel_(context.channel) {
    state_.linkFree = false;
    const std::lock_guard<std::mutex> queriesDone(state_.link);
    channel_.BeginJob(kind, context.interrupt);
  }
  ~LinkClaim() {
    channel_.EndJob(complete_);
    state_.linkFree = true;
  }
  // All was sent.
  void Complete() { complete_ = true; }
  LinkClaim(const LinkClaim&) = delete;
  LinkClaim& operator=(const LinkClaim&) = delete;

 private:
  JobState& state_;
  IChannel& channel_;
  bool complete_ = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_JOB_CONTEXT_H_
