#ifndef NUV_PRINTER_TIMED_TASKS_H_
#define NUV_PRINTER_TIMED_TASKS_H_

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

#include "platform/clock.h"

namespace Nuv::Printer {

// Runs tasks when they are due, the earliest first, on a few threads that end when nothing was due
// for a while. One for the process, never destroyed: its threads may outlive `main`.
//
// Thread-safety: safe.
class TimedTasks {
 public:
  static TimedTasks& Instance();

  // `task` must not throw. `due`: in the system clock's time.
  void Add(Platform::Deadline due, std::function<void()> task);

 private:
  static constexpr int kMostThreads = 8;

  void Work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::multimap<Platform::Deadline, std::function<void()>> tasks_;
  int threads_ = 0;
  int idle_ = 0;
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_TIMED_TASKS_H_
