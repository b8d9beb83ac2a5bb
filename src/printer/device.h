#ifndef NUV_PRINTER_DEVICE_H_
#define NUV_PRINTER_DEVICE_H_

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "command/command_runner.h"
#include "connect/nuv_connect.h"
#include "job/job_context.h"
#include "printer/askers.h"

namespace Nuv::Printer {

// A printer that was opened: one connection, whose calls take turns. Made when it is needed, let go
// when it was idle for 5 s: a printer serves one client.
//
// Thread-safety: safe; what it does to the connection, the call does that has the turn.
class Device : public std::enable_shared_from_this<Device> {
 public:
  // `where`: link, address and port count. `clock` outlives it.
  Device(const nuv_identity& where, Platform::Clock& clock, const UsbMaker& makeUsb);

  // Link, address and port as text: no other printer has the same.
  static std::string PlaceOf(const nuv_identity& where);
  const std::string& Place() const { return place_; }
  const nuv_identity& Where() const { return where_; }

  // Ends the calls under way, those that wait for their turn included, and none that comes later.
  void Cancel();

  // Closes the connection, if need be when the call under way has ended.
  void LetGo();

  // Cancels, and takes no call from now on. Waits until all have ended, unless this thread is in a
  // function of the host.
  void End();

 private:
  friend class Session;

  struct Call {
    CallLimits* limits;  // null while the connection is closed behind the last call
    std::thread::id thread;
  };

  void Begin(CallLimits& limits);
  void Finish();
  void Leave(const CallLimits* limits);
  void Connect(CallLimits& limits, bool reads);
  void Close(std::unique_lock<std::mutex>& lock);
  void LetGoWhenIdle();

  const nuv_identity where_;
  const std::string place_;
  Platform::Clock& clock_;
  Connect::NuvConnect channel_;
  // Of the call that has the turn:
  bool connected_ = false;
  bool owesAnswer_ = false;  // somebody stopped waiting for it

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::deque<Call> calls_;  // in the order in which they came; the first has the turn
  bool letGo_ = false;
  bool ended_ = false;
  bool idleIsWatched_ = false;
  Platform::Deadline lastUse_{0};
};

// Why a call did not even begin.
struct NoTurn : Failure {};

// One call on a printer: waits for its turn, connects if need be, and asks.
class Session {
 public:
  // Throws Failure: the printer is gone, this thread is in a call on it already, its turn did not
  // come in time (NoTurn), or there is no connection.
  // `reads`: it begins with what the printer has sent already, which is thrown away otherwise; a
  // connection that has ended is not made anew.
  // `look`: of a watch, which waits for its turn as long as `limits` say, and may then last that
  // long; 0: no such look.
  Session(const std::shared_ptr<Device>& device, CallLimits& limits, bool reads = false,
          std::chrono::milliseconds look = {});
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Runs a command; throws Failure unless the printer accepted it.
  Connect::Outcome Run(int code, std::vector<std::string> parameters = {});
  template <class Class>
  Connect::Outcome Run(std::vector<std::string> parameters = {}) {
    return Checked(Asked([&] { return commands_.Run<Class>(std::move(parameters)); }));
  }

  // As Run, for what a printer may not have: nothing when it did not accept. Throws Failure only
  // when nobody waits any more.
  std::optional<Connect::Outcome> Try(int code, std::vector<std::string> parameters = {});

  // As Run; a refusal is an answer.
  Connect::Outcome Ask(int code);

  // See AskIdentity.
  void AskWho(nuv_identity& printer);

  // A request without recovery, or for an empty line one more reply.
  Connect::Reply Exchange(const std::string& line);

  // For a job on this printer, which the call's limits end; the arguments outlive it.
  Connect::JobContext Job(Connect::IPrintFileLibrary& printFiles, Connect::IJobHost& host,
                          Connect::JobState& state);

  // Throws Failure when nobody waits any more.
  void Pause(std::chrono::milliseconds duration);

  // How long what was sent may stay unacknowledged until the connection counts as lost; 0: as long
  // as the system likes. Nothing over USB.
  void LimitSilence(std::chrono::milliseconds limit);

  // Whether the connection stands; what has come is thrown away.
  bool IsAlive();

  // Makes the connection anew if it was lost. Throws Failure.
  void Reconnect();

  // The printer may still send, or wait for, something that belongs to this call.
  void LeaveUnanswered();

  const CallLimits& Limits() const { return limits_; }
  Device& GetDevice() const { return *device_; }

 private:
  // Runs `ask`; an answer without the number of a command is a Failure as well.
  Connect::Outcome Asked(const std::function<Connect::Outcome()>& ask);
  void Look(Connect::Reason reason, int code);
  Connect::Outcome Checked(Connect::Outcome outcome);

  const std::shared_ptr<Device> device_;
  CallLimits& limits_;
  const Connect::CommandRunner commands_;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_DEVICE_H_
