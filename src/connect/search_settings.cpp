#include "connect/search_settings.h"

namespace Nuv::Connect {

SearchSettings& SearchSettings::Instance() {
  static SearchSettings settings;
  return settings;
}

std::string SearchSettings::Message() const {
  const std::lock_guard<std::mutex> lock(messageMutex_);
  return message_;
}

void SearchSettings::SetMessage(const std::string& message) {
  const std::lock_guard<std::mutex> lock(messageMutex_);
  message_ = message;
}

int EffectiveTimeoutMs(int timeoutMs) {
  return timeoutMs > 0 ? timeoutMs : kDefaultSearchTimeoutMs;
}

}  // namespace Nuv::Connect
