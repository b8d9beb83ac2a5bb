#include "api/marshalling.h"

#include <algorithm>
#include <cstring>

namespace Nuv::Api {

std::vector<uint8_t> Bytes(const unsigned char* data, int length) {
  if (length < 1) return {};
  return {data, data + length};
}

void CopyText(const std::string& text, char* out) { CopyTextCut(text, out, NUV_TEXT_BYTES - 1); }

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
