// Lets threads wait for something to happen in the simulator.
#ifndef NUVSIM_EVENT_GATE_H_
#define NUVSIM_EVENT_GATE_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

namespace nuvsim {

// Thread-safety: every function from any thread.
class EventGate {
 public:
  void Notify();

  // Asks `predicate` at once and after every Notify(), unlocked; false after `timeout`.
  bool WaitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds timeout);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t events_ = 0;
};

}  // namespace nuvsim

#endif  // NUVSIM_EVENT_GATE_H_
