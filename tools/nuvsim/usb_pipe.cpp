#include "nuvsim/usb_pipe.h"

#include <algorithm>
#include <utility>

namespace nuvsim {
namespace {

// A host that asks without reading the answers is not received from while this much is unread.
constexpr std::size_t kMaxQueuedBytes = std::size_t{4} << 20;

template <typename Queue>
bool Erase(Queue& queue, std::uint32_t sequence) {
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
  refusalTimer_.cancel();
  wire_.ClientLeft();
}

void UsbPipe::Send(std::uint32_t sequence, std::string bytes) {
  sends_.push_back({sequence, std::move(bytes), false});
  Advance();
}

void UsbPipe::Read(std::uint32_t sequence, std::size_t length) {
  reads_.push_back({sequence, length});
  Advance();
}

bool UsbPipe::Cancel(std::uint32_t sequence) {
  const bool isFrontSend = !sends_.empty() && sends_.front().sequence == sequence;
  if (!Erase(sends_, sequence)) return Erase(reads_, sequence);
  if (isFrontSend && isRefusing_) {
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
  isRefusing_ = true;
  if (refusal->count() == 0) {
    send.isAdmitted = false;  // to be asked about again when the faults are cleared
    return false;
  }
  refusalTimer_.expires_after(*refusal);
  refusalTimer_.async_wait([this](const asio::error_code& error) {
    if (!error && isRefusing_ && HasRunOut(refusalTimer_)) FaultsCleared();
  });
  return false;
}

bool UsbPipe::TakeFrontSend() {
  if (sends_.empty() || isRefusing_ || closing_ != Closing::kNone) return false;
  if (queuedBytes_ > kMaxQueuedBytes || !Admits(sends_.front())) return false;
  const PendingSend send = std::move(sends_.front());
  sends_.pop_front();
  Reaction reaction = wire_.Receive(send.bytes);
  host_->Completed(send.sequence, send.bytes.size(), {});
  closing_ = reaction.closing;
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
    queuedBytes_ -= deliveredBytes_;
    deliveredBytes_ = 0;
    isFrontDue_ = false;
    deliveries_.pop_front();
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

}  // namespace nuvsim
