#include "connect/network_link.h"

#include "connect/search_settings.h"
#include "transport/network_device_searcher.h"

namespace Nuv::Connect {
namespace {

constexpr size_t kMostReplyBytes = 65536;

}  // namespace

Transport::SearchTurn NetworkLink::WaitForTurn() {
  const SearchSettings& settings = SearchSettings::Instance();
  return Transport::SearchTurn(static_cast<uint16_t>(settings.Port()),
                               EffectiveTimeoutMs(settings.TimeoutMs()));
}

std::vector<std::string> NetworkLink::EnumerateDevices() {
  const SearchSettings& settings = SearchSettings::Instance();
  net_.Search(settings.Message(), static_cast<uint16_t>(settings.Port()),
              EffectiveTimeoutMs(settings.TimeoutMs()));
  return net_.GetDeviceAddresses();
}

std::vector<std::string> NetworkLink::CollectReplies() const {
  const SearchSettings& settings = SearchSettings::Instance();
  NetworkDeviceSearcher searcher(settings.Message(), waiter_);
  return searcher.Search(static_cast<uint16_t>(settings.Port()),
                         EffectiveTimeoutMs(settings.TimeoutMs()));
}

Reason NetworkLink::Write(const uint8_t* data, size_t length, bool patient) {
  const TcpResult result = net_.Connector().Send(reinterpret_cast<const char*>(data),
                                                 static_cast<int64_t>(length), patient);
  if (result == TcpResult::kOk) return Reason::kNone;
  const Reason failure = Failure(Reason::kNotTaken);
  // What was not taken in time, this side has closed.
  const bool closed = result == TcpResult::kNotSent && failure == Reason::kNotOpen;
  return closed ? Reason::kNotTaken : failure;
}

Reply NetworkLink::ReadReply() {
  std::string reply;
  if (!wholeLines_) return Receive(reply, replyTimeoutMs_) ? Reply{reply} : NoReply();
  const Platform::Deadline end = waiter_.In(replyTimeoutMs_);
  size_t lineEnd = rest_.find('\n');
  while (lineEnd == std::string::npos && rest_.size() < kMostReplyBytes) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - waiter_.GetClock().Now());
    if (!Receive(reply, static_cast<int>(left.count()))) return NoReply();
    rest_ += reply;
    lineEnd = rest_.find('\n');
  }
  reply = rest_.substr(0, lineEnd == std::string::npos ? lineEnd : lineEnd + 1);
  rest_.erase(0, reply.size());
  return {std::move(reply)};
}

bool NetworkLink::Receive(std::string& text, int timeoutMs) {
  return net_.Connector().Receive("", text, timeoutMs) == TcpResult::kOk;
}

bool NetworkLink::Discard(int quietMs, int limitMs) {
  const bool any = !rest_.empty();
  rest_.clear();
  return net_.Connector().Discard(quietMs, limitMs) || any;
}

}  // namespace Nuv::Connect
