#ifndef NUV_PRINTER_WATCH_H_
#define NUV_PRINTER_WATCH_H_

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "printer/device.h"
#include "printer/handles.h"

namespace Nuv::Printer {

// The function of the host that a watch calls; released with it.
struct WatchHost {
  nuv_watch_function function = nullptr;
  void* user = nullptr;
  nuv_release release = nullptr;
};

// A printer that is looked at regularly, on the threads of TimedTasks, one look at a time.
//
// Thread-safety: safe.
class Watch : public std::enable_shared_from_this<Watch> {
 public:
  Watch(std::shared_ptr<Device> device, std::chrono::milliseconds interval, WatchHost host)
      : device_(std::move(device)), interval_(interval), host_(host) {}

  // The first look, at once; to be called once.
  void Start() { LookAt(Platform::SystemClock().Now()); }

  // No look from now on. Waits for the one under way, unless this thread is in a function of the
  // host; the host's function has been released then.
  void End();

  // Until it has ended. Throws Failure when the limits are over before, and inside its own
  // function.
  void Wait(CallLimits& limits);

  bool IsOn(const Device& device) const { return device_.get() == &device; }

 private:
  // What was seen last.
  struct Seen {
    std::optional<nuv_state> state;
    std::optional<nuv_job> job;  // of a print that has not ended
    int32_t event = 0;
    int64_t lastAnswer = 0;
    nuv_result reason = NUV_RESULT_OK;
  };

  void LookAt(Platform::Deadline due);
  void LookNow();
  bool Look(CallLimits& limits);
  bool Ask(CallLimits& limits);
  bool Answered(Session& session, const nuv_state& state);
  bool Fails(int32_t event, nuv_result reason);
  bool Tell(nuv_event event);
  void LetGo();
  void Finish(std::unique_lock<std::mutex>& lock);

  const std::shared_ptr<Device> device_;
  const std::chrono::milliseconds interval_;
  const WatchHost host_;
  Seen seen_;                       // of the look under way
  Platform::Deadline letGoDue_{0};  // likewise

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  CallLimits* look_ = nullptr;  // under way
  std::thread::id thread_;      // on which it is
  bool ended_ = false;
  bool finishing_ = false;
  bool released_ = false;
};

Handles<Watch, nuv_watch>& Watches();

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_WATCH_H_
