// What every export does around its one call of the framework: strings in, strings and lists out.
#ifndef NUV_API_MARSHALLING_H_
#define NUV_API_MARSHALLING_H_

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/exceptions.h"
#include "api/global_instance.h"
#include "nuvconnect/NuvConnect5.h"

namespace Nuv::Api {

// Calls `operation` with the framework; -1 when there is none.
template <class Operation>
int WithFramework(Operation&& operation) {
  if (g_framework == nullptr) return NUV_NO_INSTANCE;
  return Guarded([&] { return operation(*g_framework); });
}

// The same, and calls `copy` with the result, also after a failure.
template <class Operation, class Copy>
int WithFramework(Operation&& operation, Copy&& copy) {
  const int result = WithFramework(operation);
  if (g_framework != nullptr) copy(result);
  return result;
}

// The text of an argument that may be null.
inline std::string TextOrEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

// The bytes of a block; empty when `length` is below 1.
std::vector<uint8_t> Bytes(const unsigned char* data, int length);

// Copies `text` and its NUL, at most the NUV_TEXT_BYTES bytes that the caller promised: a broken
// printer must not write over the host's memory.
void CopyText(const std::string& text, char* out);

// Copies at most `maxLength` characters and a NUL: maxLength + 1 bytes.
void CopyTextCut(const std::string& text, char* out, int maxLength);

// Copies as many strings as the caller's array holds, each cut to `entrySize` characters, and sets
// *count to the number of strings there are.
void CopyList(const std::vector<std::string>& strings, char** list, int* count, int entrySize);

// An export with one string output: written only when the operation returned 0.
template <class Operation>
int OneString(char* out, Operation&& operation) {
  std::string text;
  return WithFramework([&](auto& framework) { return operation(framework, text); },
                       [&](int result) {
                         if (result == NUV_OK) CopyText(text, out);
                       });
}

// An export with several string outputs: all written whatever the operation returned. `operation`
// takes the framework and one string for each of `outs`.
template <size_t N, class Operation, size_t... I>
int Strings(const std::array<char*, N>& outs, Operation&& operation, std::index_sequence<I...>) {
  std::array<std::string, N> texts;
  return WithFramework([&](auto& framework) { return operation(framework, texts[I]...); },
                       [&](int /*result*/) { (CopyText(texts[I], outs[I]), ...); });
}
template <size_t N, class Operation>
int Strings(const std::array<char*, N>& outs, Operation&& operation) {
  return Strings(outs, operation, std::make_index_sequence<N>());
}

// An export with a string list: copied whatever the operation returned.
template <class Operation>
int StringList(char** list, int* count, int entrySize, Operation&& operation) {
  std::vector<std::string> strings;
  return WithFramework([&](auto& framework) { return operation(framework, strings); },
                       [&](int /*result*/) { CopyList(strings, list, count, entrySize); });
}

}  // namespace Nuv::Api

#endif  // NUV_API_MARSHALLING_H_
