#include "connect/network_link.h"

#include "connect/search_settings.h"
#include "transport/network_device_searcher.h"

namespace Nuv::Connect {

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
  const TcpResult result = net_.Connector().Receive("", reply, replyTimeoutMs_);
  if (result == TcpResult::kOk) return {std::move(reply)};
  return {{}, Failure(Reason::kSilence)};
}

}  // namespace Nuv::Connect
