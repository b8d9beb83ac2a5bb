#include "printer/timed_tasks.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files.h"

namespace Nuv::Printer {
namespace {

// A thread that had nothing to do for so long ends.
constexpr std::chrono::seconds kIdle(10);

// A task that has run for so long has given its place up.
constexpr std::chrono::seconds kLong(1);

}  // namespace

TimedTasks& TimedTasks::Instance() {
  static TimedTasks* const kTasks = [] {
    Platform::KeepModuleLoaded();  // its threads run code of it
    return new TimedTasks;
  }();
  return *kTasks;
}

void TimedTasks::Add(Platform::Deadline due, std::function<void()> task, bool isLong) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto added =
      tasks_.emplace(Steady::time_point(std::chrono::duration_cast<Steady::duration>(due)),
                     Task{std::move(task), isLong});
  if (added == tasks_.begin()) due_.notify_one();
  if (!led_ && followers_ == 0) StartThread();
}

void TimedTasks::StartThread() {
  try {
    std::thread([this] { Work(); }).detach();
    ++followers_;
  } catch (const std::system_error&) {
    // A thread that has run its task, or the next task's, comes to it.
  }
}

// Whoever runs a task has left another thread to wait for the next one: the leader.
void TimedTasks::Work() {
  Lock lock(mutex_);
  for (;;) {
    const bool leads = lead_.wait_for(lock, kIdle, [this] { return !led_; });
    --followers_;
    if (!leads) return;
    led_ = true;
    const bool any = WaitAsLeader(lock);
    led_ = false;
    if (followers_ > 0) {
      lead_.notify_one();
    } else if (any) {
      StartThread();
    }
    if (!any) return;
    RunFirst(lock);
    ++followers_;
  }
}

// When the next task may have a place.
TimedTasks::Steady::time_point TimedTasks::PlaceIsFree(Steady::time_point now) const {
  auto next = now + kLong;
  int taken = 0;
  for (const auto since : places_) {
    if (since + kLong <= now) continue;
    ++taken;
    next = std::min(next, since + kLong);
  }
  return taken < kMostThreads - 1 ? now : next;
}

// Until the first task is due and has a place. False: there was none for a while.
bool TimedTasks::WaitAsLeader(Lock& lock) {
  const auto end = Steady::now() + kIdle;
  for (;;) {
    const auto now = Steady::now();
    auto next = end;
    if (!tasks_.empty()) {
      const auto& [due, task] = *tasks_.begin();
      next = due > now || task.isLong ? due : PlaceIsFree(now);
    }
    if (next <= now) return !tasks_.empty();
    due_.wait_until(lock, next);
  }
}

void TimedTasks::RunFirst(Lock& lock) {
  const Task task = std::move(tasks_.begin()->second);
  tasks_.erase(tasks_.begin());
  const auto place = task.isLong ? places_.end() : places_.insert(places_.end(), Steady::now());
  lock.unlock();
  task.run();
  lock.lock();
  if (task.isLong) return;
  // The leader may wait for it.
  if (places_.size() >= kMostThreads - 1) due_.notify_one();
  places_.erase(place);
}

}  // namespace Nuv::Printer
