#include "connect/network_link.h"

#include "connect/search_settings.h"
#include "transport/network_device_searcher.h"

namespace Nuv::Connect {

SearchTurn NetworkLink::WaitForTurn() {
  const SearchSettings& settings = SearchSettings::Instance();
  return SearchTurn(static_cast<uint16_t>(settings.port()),
                    EffectiveTimeoutMs(settings.timeout_ms()));
}

bool NetworkLink::EnumerateDevices(std::vector<std::string>& found) {
  const SearchSettings& settings = SearchSettings::Instance();
  if (net_.Search(settings.message(), static_cast<uint16_t>(settings.port()),
                  EffectiveTimeoutMs(settings.timeout_ms())) != 0) {
    return false;
  }
  found = net_.GetDeviceAddresses();
  return true;
}

std::vector<std::string> NetworkLink::CollectReplies() const {
  const SearchSettings& settings = SearchSettings::Instance();
  NetworkDeviceSearcher searcher(settings.message());
  return searcher.Search(static_cast<uint16_t>(settings.port()),
                         EffectiveTimeoutMs(settings.timeout_ms()));
}

bool NetworkLink::Write(const uint8_t* data, size_t length, bool patient) {
  return !givesUp_ && net_.Send(reinterpret_cast<const char*>(data), static_cast<int64_t>(length),
                                patient) == TcpResult::kOk;
}

std::string NetworkLink::ReadReply(Platform::Interrupt* interrupt) {
  constexpr int kSliceMs = TcpDeviceConnector::kReadSliceMs;
  std::string reply;
  TcpResult result = TcpResult::kNoReply;
  for (int waitedMs = 0; waitedMs + kSliceMs <= replyTimeoutMs_; waitedMs += kSliceMs) {
    if (givesUp_ || result != TcpResult::kNoReply) break;
    if (interrupt != nullptr && interrupt->raised()) break;
    result = net_.Receive("", reply, kSliceMs);
  }
  return reply;
}

}  // namespace Nuv::Connect
