// What every export does around its one operation: no instance, strings and lists in and out,
// exceptions as results.
#ifndef NUV_API_MARSHALLING_H_
#define NUV_API_MARSHALLING_H_

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "job/job_context.h"
#include "nuvconnect/IConnectingFramework.h"
#include "nuvconnect/NuvConnect5.h"

// The one framework behind the exports; null until API_Initial. Not synchronised: the host calls
// API_Initial before and API_Close after all other calls.
extern Nuv::Connect::IConnectingFramework* g_framework;

// True while the library's exceptions become results; set by API_Initial.
extern bool g_noExceptions;

// The callback that is told of them: the last one registered through the exports.
extern std::atomic<NuvErrorCodeCallback> g_errorCode;

namespace Nuv::Api {

using Framework = Connect::IConnectingFramework;

// To be called while `error` is handled: the result that it becomes (1), told to the error-code
// callback; else throws it again. What host code has thrown never becomes one. A printer that names
// no serial number always does: listings promise that result.
int ResultOf(const std::exception& error);

// Runs `operation`; its exceptions leave unchanged or, for hosts that cannot catch, as a result.
template <class Operation>
int Guarded(Operation&& operation) {
  Connect::HostThrew() = false;
  try {
    return operation();
  } catch (const std::exception& error) {
    return ResultOf(error);
  }
}

// ---- Arguments that the host and the framework know in different forms

// Copies at most `maxLength` characters of `text` and a NUL: maxLength + 1 bytes.
void CopyTextCut(const std::string& text, char* out, int maxLength);

// Copies as many strings as the caller's array holds, each cut to `entrySize` characters, and sets
// *count to the number of strings there are.
void CopyList(const std::vector<std::string>& strings, char** list, int* count, int entrySize);

// A text that may be null.
struct OrEmpty {
  const char* text;
  operator std::string() const { return text == nullptr ? std::string() : std::string(text); }
};

// A block of bytes, empty when `length` is below 1.
struct Bytes {
  const unsigned char* data;
  int length;
  operator std::vector<uint8_t>() const;
};

enum class Written { kAlways, kOnSuccess };

// A buffer for a text of at most `maxLength` characters. Of one string output that is all the
// caller promised: a broken printer must not write over the host's memory.
struct TextOut {
  char* out;
  Written written = Written::kAlways;
  int maxLength = NUV_TEXT_BYTES - 1;
  std::string text = {};
  operator std::string&() { return text; }
};

// An array of buffers, copied whatever the operation returned.
struct ListOut {
  char** list;
  int* count;
  int entrySize;
  std::vector<std::string> strings = {};
  operator std::vector<std::string>&() { return strings; }
};

template <class Argument>
void HandOut(const Argument& /*argument*/, int /*result*/) {}
inline void HandOut(const TextOut& argument, int result) {
  if (argument.written == Written::kOnSuccess && result != NUV_OK) return;
  CopyTextCut(argument.text, argument.out, argument.maxLength);
}
inline void HandOut(const ListOut& argument, int /*result*/) {
  CopyList(argument.strings, argument.list, argument.count, argument.entrySize);
}

// Calls `operation` of the framework with `arguments` and hands out what it wrote. -1, and nothing
// is touched, when there is no framework.
template <class Operation, class... Arguments>
int Forward(Operation operation, Arguments&&... arguments) {
  if (g_framework == nullptr) return NUV_NO_INSTANCE;
  const int result = Guarded([&] { return std::invoke(operation, *g_framework, arguments...); });
  (HandOut(arguments, result), ...);
  return result;
}

}  // namespace Nuv::Api

#endif  // NUV_API_MARSHALLING_H_
