#include "printer/device.h"

#include <algorithm>

#include "command/reply_views.h"
#include "printer/host_call.h"
#include "printer/timed_tasks.h"

namespace Nuv::Printer {

using Connect::Outcome;
using Connect::Reason;
using Lock = std::unique_lock<std::mutex>;

namespace {

constexpr std::chrono::seconds kIdle(5);

}  // namespace

Device::Device(const nuv_identity& where, Platform::Clock& clock, const UsbMaker& makeUsb)
    : where_(where),
      place_(PlaceOf(where)),
      clock_(clock),
      channel_(Connect::NuvConnect::kReplyTimeoutMs, makeUsb(), clock) {
  channel_.ReadWholeLines();
}

std::string Device::PlaceOf(const nuv_identity& where) {
  const std::string address = where.address.text;
  return where.link == NUV_LINK_USB ? address : address + ":" + std::to_string(where.tcp_port);
}

void Device::Cancel() {
  const Lock lock(mutex_);
  for (const Call& call : calls_) {
    if (call.limits != nullptr) call.limits->Raise();
  }
  changed_.notify_all();
}

// With the lock held: a call is over, and another one has the turn.
void Device::Leave(const CallLimits* limits) {
  calls_.erase(std::find_if(calls_.begin(), calls_.end(),
                            [&](const Call& one) { return one.limits == limits; }));
  changed_.notify_all();
}

// It has the turn meanwhile, and the lock is free, since the host may ask for it while the channel
// is busy.
void Device::Close(Lock& lock) {
  calls_.push_back({nullptr, {}});
  lock.unlock();
  channel_.CloseDevice();
  lock.lock();
  Leave(nullptr);
}

void Device::LetGo() {
  Lock lock(mutex_);
  if (calls_.empty()) {
    Close(lock);
  } else {
    letGo_ = true;
  }
}

void Device::End() {
  {
    const Lock lock(mutex_);
    ended_ = true;
  }
  Cancel();
  Lock lock(mutex_);
  if (!HostCall::UnderWay()) changed_.wait(lock, [this] { return calls_.empty(); });
  if (calls_.empty()) Close(lock);
}

void Device::Begin(CallLimits& limits) {
  Lock lock(mutex_);
  const auto self = std::this_thread::get_id();
  if (ended_) throw Failure{NUV_RESULT_BAD_HANDLE, {}};
  if (std::any_of(calls_.begin(), calls_.end(),
                  [&](const Call& one) { return one.thread == self; })) {
    throw Failure{NUV_RESULT_BUSY, place_ + ": a call on it is under way on this thread"};
  }
  calls_.push_back({&limits, self});
  while (calls_.front().limits != &limits) {
    lock.unlock();
    const bool over = limits.Raised();
    lock.lock();
    if (over) {
      Leave(&limits);
      throw NoTurn{{limits.Why(), place_ + ": its turn did not come"}};
    }
    if (calls_.front().limits != &limits) changed_.wait_for(lock, limits.Patience());
  }
}

void Device::Finish() {
  Lock lock(mutex_);
  // Over the network an answer that nobody waits for any more goes with its connection.
  if (letGo_ || ended_ || (owesAnswer_ && where_.link == NUV_LINK_NETWORK)) {
    connected_ = owesAnswer_ = letGo_ = false;
    lock.unlock();
    channel_.CloseDevice();
    lock.lock();
  }
  lastUse_ = clock_.Now();
  Leave(calls_.front().limits);
  if (connected_ && !idleIsWatched_) LetGoWhenIdle();
}

void Device::LetGoWhenIdle() {
  idleIsWatched_ = true;
  TimedTasks::Instance().Add(lastUse_ + kIdle, [weak = weak_from_this()] {
    const std::shared_ptr<Device> device = weak.lock();
    if (device == nullptr) return;
    Lock lock(device->mutex_);
    device->idleIsWatched_ = false;
    if (!device->calls_.empty()) return;  // which watches it again
    if (device->clock_.Now() < device->lastUse_ + kIdle) return device->LetGoWhenIdle();
    device->Close(lock);
  });
}

void Device::Connect(CallLimits& limits, bool reads) {
  if (reads && connected_) return;
  // What was let go, or ended meanwhile, is made anew.
  if (connected_ && channel_.Look().alive) {
    if (owesAnswer_) channel_.ReadAgain(&limits);
    owesAnswer_ = false;
    return;
  }
  Transport::NetworkDevice device;
  device.valid = true;
  device.address = where_.address.text;
  device.port = static_cast<uint16_t>(where_.tcp_port);
  const Reason reason = where_.link == NUV_LINK_USB ? channel_.OpenUsb(where_.address.text, &limits)
                                                    : channel_.Open(device, &limits);
  connected_ = reason == Reason::kNone;
  owesAnswer_ = false;
  if (connected_) return;
  if (reason == Reason::kGivenUp) throw Failure{limits.Why(), place_ + ": not yet connected"};
  throw Failure{ResultOf(reason), place_ + ": " + Connect::WordsFor(reason)};
}

Session::Session(const std::shared_ptr<Device>& device, CallLimits& limits, bool reads,
                 std::chrono::milliseconds look)
    : device_(device), limits_(limits), commands_(device->channel_, device->clock_, {}, &limits) {
  device_->Begin(limits_);
  if (look.count() > 0) limits_.Restart(look);
  try {
    device_->Connect(limits_, reads);
  } catch (...) {
    device_->Finish();
    throw;
  }
}

Session::~Session() { device_->Finish(); }

Outcome Session::Run(int code, std::vector<std::string> parameters) {
  return Checked(Asked([&] { return commands_.Run(code, std::move(parameters)); }));
}

std::optional<Outcome> Session::Try(int code, std::vector<std::string> parameters) {
  Outcome outcome = Asked([&] { return commands_.Run(code, std::move(parameters)); });
  if (outcome.reason == Reason::kGivenUp) Look(outcome.reason, outcome.code);
  if (outcome.result != NUV_OK) return std::nullopt;
  return outcome;
}

Outcome Session::Ask(int code) {
  Outcome outcome = Asked([&] { return commands_.Run(code, {}, Connect::Refusal::kAnswers); });
  return outcome.reason == Reason::kRefused ? outcome : Checked(std::move(outcome));
}

void Session::AskWho(nuv_identity& printer) {
  try {
    AskIdentity(commands_, printer);
  } catch (const Failure& failure) {
    if (failure.result != NUV_RESULT_CANCELLED) throw;
    Look(Reason::kGivenUp, failure.command);
  }
}

Connect::Reply Session::Exchange(const std::string& line) {
  Connect::Reply reply = line.empty() ? device_->channel_.ReadAgain(&limits_)
                                      : device_->channel_.Transact({line, false, &limits_});
  Look(reply.reason, 0);
  return reply;
}

Connect::JobContext Session::Job(Connect::IPrintFileLibrary& printFiles, Connect::IJobHost& host,
                                 Connect::JobState& state) {
  return {device_->channel_, device_->clock_, printFiles, host, state, &limits_};
}

void Session::Pause(std::chrono::milliseconds duration) {
  if (device_->clock_.WaitFor(duration, limits_)) throw Failure{limits_.Why(), device_->place_};
}

void Session::LimitSilence(std::chrono::milliseconds limit) {
  device_->channel_.LimitSilence(limit);
}

bool Session::IsAlive() { return device_->channel_.Look().alive; }

void Session::Reconnect() { device_->Connect(limits_, false); }

void Session::LeaveUnanswered() { device_->owesAnswer_ = true; }

void Session::Look(Reason reason, int code) {
  if (reason == Reason::kNone) return;
  const std::string command = code == 0 ? "" : "command " + std::to_string(code) + ": ";
  if (reason != Reason::kGivenUp) {
    throw Failure{ResultOf(reason), device_->place_ + ": " + command + Connect::WordsFor(reason),
                  code};
  }
  device_->owesAnswer_ = true;
  throw Failure{limits_.Why(), device_->place_ + ": " + command + nuv_result_text(limits_.Why()),
                code};
}

Outcome Session::Asked(const std::function<Outcome()>& ask) {
  try {
    return ask();
  } catch (const Command::ReplyError& error) {
    throw Failure{NUV_RESULT_UNREADABLE,
                  device_->place_ + ": command " + std::to_string(error.Code()) +
                      ": the answer cannot be read",
                  error.Code()};
  }
}

Outcome Session::Checked(Outcome outcome) {
  Look(outcome.reason, outcome.code);
  return outcome;
}

}  // namespace Nuv::Printer
