#include "printer/watch.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <utility>

#include "command/reply_views.h"
#include "printer/asking.h"
#include "printer/host_call.h"
#include "printer/query.h"
#include "printer/timed_tasks.h"

namespace Nuv::Printer {
namespace {

using Lock = std::unique_lock<std::mutex>;
using std::chrono::milliseconds;

// How long a look waits for its turn, and a printer at least may take to answer.
constexpr milliseconds kTurn(1000);
constexpr milliseconds kLeastPatience(2000);
// A printer that is gone is known so much sooner than one that is silent. The system counts from
// its first repetition, which comes a fifth of a second behind the question, on a slow network
// later.
constexpr milliseconds kSooner(800);
// A watch keeps other clients out no longer.
constexpr std::chrono::seconds kKeepsConnection(10);

bool IsPrinting(const std::optional<nuv_state>& state) {
  return state && state->state.value == NUV_STATE_PRINTING;
}

bool Same(const nuv_int& a, const nuv_int& b) { return a.known == b.known && a.value == b.value; }

// But for what each look works out anew.
bool Same(const std::optional<nuv_state>& a, const nuv_state& b) {
  return a && Same(a->state, b.state) && Same(a->error_number, b.error_number) &&
         Same(a->layer, b.layer) && Same(a->percent, b.percent) &&
         Same(a->minutes_left, b.minutes_left) &&
         std::strcmp(a->job_name.text, b.job_name.text) == 0;
}

// A printer that leaves the question unacknowledged for so long has gone.
void AskPatiently(Session& session, milliseconds patience, nuv_state& state) {
  struct Silence {
    Session& limited;
    ~Silence() { limited.LimitSilence({}); }
  };
  session.LimitSilence(patience);
  const Silence limit{session};
  AskState(session, state);
}

}  // namespace

void Watch::LookAt(Platform::Deadline due) {
  const bool isSilent = seen_.event == NUV_EVENT_SILENT || seen_.event == NUV_EVENT_GONE;
  const auto look = [weak = weak_from_this()] {
    if (const std::shared_ptr<Watch> watch = weak.lock()) watch->LookNow();
  };
  TimedTasks::Instance().Add(due, look, isSilent);
}

void Watch::LookNow() {
  const Platform::Deadline begin = Platform::SystemClock().Now();
  CallLimits limits(begin + kTurn, Platform::SystemClock());
  Lock lock(mutex_);
  if (ended_) return;
  look_ = &limits;
  thread_ = std::this_thread::get_id();
  lock.unlock();
  const bool goesOn = Look(limits);
  if (goesOn) LetGo();
  lock.lock();
  look_ = nullptr;
  thread_ = {};
  ended_ = ended_ || !goesOn;
  if (ended_) return Finish(lock);
  LookAt(std::max(begin + interval_, Platform::SystemClock().Now()));
}

// Behind the last look.
void Watch::Finish(Lock& lock) {
  if (std::exchange(finishing_, true)) return;
  lock.unlock();
  if (host_.release != nullptr) {
    const HostCall call;
    host_.release(host_.user);
  }
  lock.lock();
  released_ = true;
  changed_.notify_all();
}

void Watch::End() {
  Lock lock(mutex_);
  ended_ = true;
  if (look_ == nullptr) {
    Finish(lock);
  } else {
    look_->Raise();
  }
  if (!HostCall::UnderWay()) changed_.wait(lock, [this] { return released_; });
}

void Watch::Wait(CallLimits& limits) {
  Lock lock(mutex_);
  if (thread_ == std::this_thread::get_id()) {
    throw Failure{NUV_RESULT_BUSY, "a watch that is waited for in its own function"};
  }
  while (!released_) {
    lock.unlock();
    if (limits.Raised()) throw Failure{limits.Why(), {}};
    lock.lock();
    if (!released_) changed_.wait_for(lock, limits.Patience());
  }
}

// False: the host wants no further look, or the printer is gone from the program.
bool Watch::Look(CallLimits& limits) {
  try {
    return Ask(limits);
  } catch (const NoTurn&) {
    return true;  // a job is sent, or somebody waits for a printer that says nothing
  } catch (const Failure& failure) {
    switch (failure.result) {
      case NUV_RESULT_BAD_HANDLE:
        return false;
      case NUV_RESULT_CANCELLED:
        return true;
      default:
        return Fails(NUV_EVENT_GONE, failure.result);
    }
  } catch (const std::exception&) {
    return Fails(NUV_EVENT_SILENT, NUV_RESULT_SYSTEM);
  }
}

// Throws Failure when no connection can be made.
bool Watch::Ask(CallLimits& limits) {
  const milliseconds patience = std::max(interval_, kLeastPatience);
  Session session(device_, limits, false, patience);
  nuv_state state = NUV_INIT(nuv_state);
  bool isConnected = true;
  try {
    try {
      AskPatiently(session, patience - kSooner, state);
    } catch (const Failure& failure) {
      if (failure.result != NUV_RESULT_LOST) throw;
      isConnected = false;
      session.Reconnect();
      isConnected = true;
      AskPatiently(session, patience - kSooner, state);
    }
  } catch (const Failure& failure) {
    // Still there, but it says nothing, or what cannot be read.
    const bool isSilent = isConnected && failure.result == NUV_RESULT_TIME_LIMIT;
    if (isSilent || failure.result == NUV_RESULT_REFUSED ||
        failure.result == NUV_RESULT_UNREADABLE) {
      return Fails(NUV_EVENT_SILENT, isSilent ? NUV_RESULT_NO_ANSWER : failure.result);
    }
    throw;
  } catch (const Command::ReplyError&) {
    return Fails(NUV_EVENT_SILENT, NUV_RESULT_UNREADABLE);
  }
  return Answered(session, state);
}

bool Watch::Answered(Session& session, const nuv_state& state) {
  const bool wasPrinting = IsPrinting(seen_.state) || seen_.job.has_value();
  const bool answered = seen_.event == NUV_EVENT_STATE || seen_.event == NUV_EVENT_PRINT_ENDED;
  const bool changed = !answered || !Same(seen_.state, state);
  seen_.state = state;
  seen_.lastAnswer = static_cast<int64_t>(std::time(nullptr));
  seen_.reason = NUV_RESULT_OK;
  nuv_event event = NUV_INIT(nuv_event);
  event.event = NUV_EVENT_STATE;
  event.changed = changed ? 1 : 0;
  const auto tried = [](auto question) {
    try {
      question();
    } catch (const std::exception&) {
      // What a printer does not tell of its job stays unknown.
    } catch (const Failure&) {
    }
  };
  const bool isPrinting = IsPrinting(seen_.state);
  if (isPrinting && !seen_.job) {
    seen_.job = NUV_INIT(nuv_job);
    tried([&] { AskJob(session, *seen_.job); });
  }
  // In error a print waits for somebody to help.
  if (wasPrinting && !isPrinting && state.state.value != NUV_STATE_ERROR) {
    event.event = NUV_EVENT_PRINT_ENDED;
    event.changed = 1;
    if (seen_.job && seen_.job->index.known != 0) {
      tried([&] {
        const auto record = session.Try(175, {std::to_string(seen_.job->index.value)});
        if (record) Take(*record, {{"R", &event.job_result}});
      });
    }
  }
  const bool goesOn = Tell(event);
  if (event.event == NUV_EVENT_PRINT_ENDED) seen_.job.reset();
  return goesOn;
}

bool Watch::Fails(int32_t what, nuv_result reason) {
  nuv_event event = NUV_INIT(nuv_event);
  event.event = what;
  event.changed = seen_.event != what || seen_.reason != reason ? 1 : 0;
  seen_.reason = reason;
  return Tell(event);
}

bool Watch::Tell(nuv_event event) {
  {
    const Lock lock(mutex_);
    if (ended_) return false;
  }
  seen_.event = event.event;
  event.state = seen_.state ? &*seen_.state : nullptr;
  event.job = seen_.job ? &*seen_.job : nullptr;
  event.last_answer = seen_.lastAnswer;
  event.reason = seen_.reason;
  const HostCall call;
  return host_.function(&event, host_.user) == 1;
}

void Watch::LetGo() {
  const Platform::Deadline now = Platform::SystemClock().Now();
  if (now + interval_ < letGoDue_) return;
  if (letGoDue_.count() != 0) device_->LetGo();
  letGoDue_ = now + kKeepsConnection;
}

Handles<Watch, nuv_watch>& Watches() {
  static auto* const kWatches = new Handles<Watch, nuv_watch>;
  return *kWatches;
}

}  // namespace Nuv::Printer
