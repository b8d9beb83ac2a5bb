#include "api/marshalling.h"

#include <algorithm>
#include <cstring>

#include "command/reply_views.h"
#include "platform/diagnostics.h"

bool g_noExceptions = false;
std::atomic<NuvErrorCodeCallback> g_errorCode{nullptr};

namespace Nuv::Api {

int ResultOf(const std::exception& error) {
  const bool always = dynamic_cast<const Command::NoSerialNumber*>(&error) != nullptr;
  if (Connect::HostThrew() || !(g_noExceptions || always)) throw;
  const auto* const reply = dynamic_cast<const Command::ReplyError*>(&error);
  const int code = reply == nullptr ? 0 : reply->Code();
  Platform::Diagnostic("F%d: %s", code, error.what());
  if (const NuvErrorCodeCallback callback = g_errorCode) {
    Connect::CallHost(callback, int{NUV_FAILED}, code);
  }
  return NUV_FAILED;
}

Bytes::operator std::vector<uint8_t>() const {
  if (length < 1) return {};
  return {data, data + length};
}

void CopyTextCut(const std::string& text, char* out, int maxLength) {
  const size_t length = std::min(text.size(), static_cast<size_t>(std::max(maxLength, 0)));
  std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

void CopyList(const std::vector<std::string>& strings, char** list, int* count, int entrySize) {
  const size_t room = static_cast<size_t>(std::max(*count, 0));
  for (size_t i = 0; i < std::min(strings.size(), room); ++i) {
    CopyTextCut(strings[i], list[i], entrySize);
  }
  *count = static_cast<int>(strings.size());
}

}  // namespace Nuv::Api
