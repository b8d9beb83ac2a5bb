#include "printer/askers.h"

#include <system_error>

#include "printer/open_printers.h"
#include "printer/values.h"

namespace Nuv::Printer {

using Lock = std::unique_lock<std::mutex>;

Askers::~Askers() {
  GiveUp();
  for (std::thread& thread : threads_) thread.join();
}

void Askers::Ask(const nuv_identity& printer,
                 const std::optional<Transport::NetworkDevice>& device) {
  const Lock lock(mutex_);
  Question question = {printer, device};
  question.printer.contact = NUV_RESULT_NO_ANSWER;  // until it has answered
  try {
    if (working_ < kMost) {
      threads_.emplace_back([this] { Work(); });
      ++working_;
    }
  } catch (const std::system_error&) {
    if (working_ == 0) {  // else the others come to it
      question.printer.contact = NUV_RESULT_SYSTEM;
      asked_.push_back(question.printer);
      return;
    }
  }
  waiting_.push_back(question);
}

void Askers::Work() {
  Lock lock(mutex_);
  while (!waiting_.empty()) {
    Question question = waiting_.front();
    waiting_.pop_front();
    ++underWay_;
    lock.unlock();
    Answer(question);
    lock.lock();
    --underWay_;
    asked_.push_back(question.printer);
    answered_.notify_all();
  }
  --working_;
}

void Askers::Answer(Question& question) {
  nuv_identity& printer = question.printer;
  const nuv_result result = Guarded(nullptr, [&] {
    // A printer serves one client, which may be this process.
    if (const auto device = OpenPrinters::Instance().At(printer)) {
      return Session(device, limits_).AskWho(printer);
    }
    Connect::NuvConnect channel(Connect::NuvConnect::kReplyTimeoutMs, makeUsb_(), clock_);
    const Connect::Reason opened = question.device
                                       ? channel.Open(*question.device, &limits_)
                                       : channel.OpenUsb(printer.address.text, &limits_);
    if (opened == Connect::Reason::kNone) {
      return AskIdentity(Connect::CommandRunner(channel, clock_, {}, &limits_), printer);
    }
    throw Failure{ResultOf(opened),
                  std::string(printer.address.text) + ": " + Connect::WordsFor(opened)};
  });
  const bool givenUp = result == NUV_RESULT_CANCELLED || result == NUV_RESULT_TIME_LIMIT;
  printer.contact = givenUp ? NUV_RESULT_NO_ANSWER : result;
}

std::vector<nuv_identity> Askers::Take(std::chrono::milliseconds patience) {
  Lock lock(mutex_);
  // Also a wait that is over at once costs what the system allows itself on top.
  if (patience.count() > 0) {
    answered_.wait_for(lock, patience, [this] { return !asked_.empty(); });
  }
  return std::exchange(asked_, {});
}

bool Askers::Busy() const {
  const Lock lock(mutex_);
  return !waiting_.empty() || underWay_ > 0 || !asked_.empty();
}

void Askers::GiveUp() {
  limits_.Raise();
  const Lock lock(mutex_);
  for (const Question& question : waiting_) asked_.push_back(question.printer);
  waiting_.clear();
}

}  // namespace Nuv::Printer
