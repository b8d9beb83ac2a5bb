#ifndef NUV_PRINTER_TIMED_TASKS_H_
#define NUV_PRINTER_TIMED_TASKS_H_

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>

#include "platform/clock.h"

namespace Nuv::Printer {

// Runs tasks when they are due, the earliest first, on a few threads that end when there was
// nothing for them for a while. One that takes long gives its place up, so that it delays no other.
// One for the process, never destroyed: its threads may outlive `main`.
//
// Thread-safety: safe.
class TimedTasks {
 public:
  static TimedTasks& Instance();

  // `task` must not throw. `due`: in the system clock's time. `long`: it takes long, and no place.
  void Add(Platform::Deadline due, std::function<void()> task, bool isLong = false);

 private:
  using Steady = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;

  struct Task {
    std::function<void()> run;
    bool isLong;
  };

  // So many threads while no task takes long, with the one that waits for what is due next.
  static constexpr int kMostThreads = 8;

  void StartThread();
  void Work();
  bool WaitAsLeader(Lock& lock);
  void RunFirst(Lock& lock);
  Steady::time_point PlaceIsFree(Steady::time_point now) const;

  std::mutex mutex_;
  std::condition_variable due_;   // for the leader
  std::condition_variable lead_;  // for the followers
  std::multimap<Steady::time_point, Task> tasks_;
  std::list<Steady::time_point> places_;  // since when each is taken
  bool led_ = false;                      // a thread waits for what is due next
  int followers_ = 0;                     // threads that wait to be that one
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_TIMED_TASKS_H_
