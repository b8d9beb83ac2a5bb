// Faults of a reply that leave the library as exceptions: hosts catch the standard classes.
#ifndef NUV_COMMAND_REPLY_ERROR_H_
#define NUV_COMMAND_REPLY_ERROR_H_

#include <cstdint>
#include <stdexcept>

namespace Nuv::Command {

// What each of them carries besides its text: the number of the command.
class ReplyError {
 public:
  int32_t code() const { return code_; }

 protected:
  explicit ReplyError(int32_t code) : code_(code) {}
  ~ReplyError() = default;

 private:
  int32_t code_;
};

class MalformedNumber final : public std::invalid_argument, public ReplyError {
 public:
  MalformedNumber(const char* text, int32_t code) : std::invalid_argument(text), ReplyError(code) {}
};

class NumberOutOfRange final : public std::out_of_range, public ReplyError {
 public:
  NumberOutOfRange(const char* text, int32_t code) : std::out_of_range(text), ReplyError(code) {}
};

// A printer that has a query for its serial number names none.
class NoSerialNumber final : public std::out_of_range, public ReplyError {
 public:
  explicit NoSerialNumber(int32_t code)
      : std::out_of_range("the printer names no serial number"), ReplyError(code) {}
};

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_REPLY_ERROR_H_
