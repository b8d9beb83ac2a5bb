#include "nuvsim/usb/pipe.h"

#include <algorithm>
#include <utility>

namespace NuvSim {
namespace {

// A host that asks without reading the answers is not received from while this much is unread.
constexpr size_t kMaxQueuedBytes = size_t{4} << 20;

template <typename Queue>
bool Erase(Queue& queue, uint32_t sequence) {
  const auto found = std::find_if(queue.begin(), queue.end(), [sequence](const auto& each) {
    return each.sequence == sequence;
  });
  if (found == queue.end()) return false;
  queue.erase(found);
  return true;
}

// A timer that had run out before it was cancelled calls without an error; it may have been set
// anew.
bool HasRunOut(const asio::steady_timer& timer) {
  return timer.expiry() <= asio::steady_timer::clock_type::now();
}

}  // namespace

UsbPipe::UsbPipe(asio::io_context& io, Wire& wire)
    : wire_(wire), refusalTimer_(io), deliveryTimer_(io) {}

void UsbPipe::Attach(UsbHost& host) {
  host_ = &host;
  wire_.ClientCame(0);
}

void UsbPipe::Detach() {
  if (host_ == nullptr) return;
  host_ = nullptr;
  sends_.clear();
  reads_.clear();
  Reset();
  closing_ = Closing::kNone;
  isRefusing_ = false;
  isStalled_ = false;
  refusalTimer_.cancel();
  wire_.ClientLeft();
}

void UsbPipe::Send(uint32_t sequence, std::string bytes) {
  sends_.push_back({sequence, std::move(bytes)});
  Advance();
}

void UsbPipe::Read(uint32_t sequence, size_t length) {
  reads_.push_back({sequence, length});
  Advance();
}

bool UsbPipe::Cancel(uint32_t sequence) {
  const bool isFrontSend = !sends_.empty() && sends_.front().sequence == sequence;
  if (!Erase(sends_, sequence)) return Erase(reads_, sequence);
  if (isFrontSend && isRefusing_ && !isStalled_) {
    // The refusal was of this transfer; the one behind it is asked about anew.
    isRefusing_ = false;
    refusalTimer_.cancel();
    Advance();
  }
  return true;
}

void UsbPipe::Reset() {
  deliveries_.clear();
  queuedBytes_ = 0;
  deliveredBytes_ = 0;
  isDelaying_ = false;
  isFrontDue_ = false;
  deliveryTimer_.cancel();
}

void UsbPipe::FaultsCleared() {
  isRefusing_ = false;
  isStalled_ = false;
  refusalTimer_.cancel();
  Advance();
}

// Sends are taken and deliveries made until neither can go on.
void UsbPipe::Advance() {
  while (host_ != nullptr && (TakeFrontSend() || DeliverFront())) {
  }
  if (host_ != nullptr && deliveries_.empty() && closing_ != Closing::kNone) host_->Ended();
}

bool UsbPipe::Admits(PendingSend& send) {
  if (std::exchange(send.isAdmitted, true)) return true;
  const auto refusal = wire_.TakeRefusal();
  if (!refusal) return true;
  if (refusal->count() == 0) send.isAdmitted = false;  // to be asked again when that is over
  Refuse(*refusal);
  return false;
}

// Takes nothing for that time; zero: until the faults are cleared.
void UsbPipe::Refuse(std::chrono::milliseconds time) {
  isRefusing_ = true;
  if (time.count() == 0) return;
  refusalTimer_.expires_after(time);
  refusalTimer_.async_wait([this](const asio::error_code& error) {
    if (!error && isRefusing_ && HasRunOut(refusalTimer_)) FaultsCleared();
  });
}

bool UsbPipe::TakeFrontSend() {
  if (sends_.empty() || isRefusing_ || closing_ != Closing::kNone) return false;
  if (queuedBytes_ > kMaxQueuedBytes || !Admits(sends_.front())) return false;
  PendingSend& send = sends_.front();
  Reaction reaction = wire_.Receive(std::string_view(send.bytes).substr(send.taken));
  send.taken += reaction.taken;
  closing_ = reaction.closing;
  if (reaction.stall) {
    isStalled_ = true;
    Refuse(*reaction.stall);
  }
  if (send.taken == send.bytes.size() || closing_ != Closing::kNone) {
    host_->Completed(send.sequence, send.bytes.size(), {});
    sends_.pop_front();
  }
  for (Delivery& each : reaction.deliveries) {
    queuedBytes_ += each.bytes.size();
    deliveries_.push_back(std::move(each));
  }
  return true;
}

// Ends the host's first read with what fits of the first delivery. A read never holds parts of two,
// since a delivery ends in a short packet, or in an empty one, and that ends the read.
bool UsbPipe::DeliverFront() {
  if (deliveries_.empty() || !IsFrontDue() || reads_.empty()) return false;
  const PendingRead read = reads_.front();
  reads_.pop_front();
  const std::string_view rest = std::string_view(deliveries_.front().bytes).substr(deliveredBytes_);
  const std::string_view part = rest.substr(0, read.length);
  host_->Completed(read.sequence, part.size(), part);
  deliveredBytes_ += part.size();
  if (part.size() == rest.size()) {
    if (!deliveries_.front().repeats) {
      queuedBytes_ -= deliveredBytes_;
      deliveries_.pop_front();
    }
    deliveredBytes_ = 0;
    isFrontDue_ = false;
    wire_.AnswerSent();
  }
  return true;
}

bool UsbPipe::IsFrontDue() {
  if (isFrontDue_ || isDelaying_) return isFrontDue_;
  const auto delay = deliveries_.front().delay;
  if (delay.count() == 0) return isFrontDue_ = true;
  isDelaying_ = true;
  deliveryTimer_.expires_after(delay);
  deliveryTimer_.async_wait([this](const asio::error_code& error) {
    if (error || !isDelaying_ || !HasRunOut(deliveryTimer_)) return;
    isDelaying_ = false;
    isFrontDue_ = true;
    Advance();
  });
  return false;
}

}  // namespace NuvSim
