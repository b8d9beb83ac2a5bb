#include "printer/timed_tasks.h"

#include <algorithm>
#include <system_error>
#include <thread>

#include "platform/files.h"

namespace Nuv::Printer {
namespace {

using Steady = std::chrono::steady_clock;

// A thread that had nothing to do for so long ends.
constexpr std::chrono::seconds kIdle(10);

Steady::time_point PointOf(Platform::Deadline deadline) {
  return Steady::time_point(std::chrono::duration_cast<Steady::duration>(deadline));
}

}  // namespace

TimedTasks& TimedTasks::Instance() {
  static TimedTasks* const kTasks = [] {
    Platform::KeepModuleLoaded();  // its threads run code of it
    return new TimedTasks;
  }();
  return *kTasks;
}

void TimedTasks::Add(Platform::Deadline due, std::function<void()> task) {
  const std::lock_guard<std::mutex> lock(mutex_);
  tasks_.emplace(due, std::move(task));
  changed_.notify_one();
  if (idle_ > 0 || threads_ == kMostThreads) return;
  try {
    std::thread([this] { Work(); }).detach();
    ++threads_;
  } catch (const std::system_error&) {
    // Another thread, or the next task's, comes to it.
  }
}

void TimedTasks::Work() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (auto since = Steady::now(); !tasks_.empty() || Steady::now() < since + kIdle;) {
    const auto next = tasks_.empty() ? since + kIdle : PointOf(tasks_.begin()->first);
    if (tasks_.empty() || Steady::now() < next) {
      ++idle_;
      changed_.wait_until(lock, next);
      --idle_;
      continue;
    }
    const auto task = std::move(tasks_.begin()->second);
    tasks_.erase(tasks_.begin());
    lock.unlock();
    task();
    lock.lock();
    since = Steady::now();
  }
  --threads_;
}

}  // namespace Nuv::Printer
