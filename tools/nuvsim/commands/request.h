// From received bytes to requests: lines split into commands and data, a command line taken apart,
// and the reading of its parameters.
#ifndef NUVSIM_COMMANDS_REQUEST_H_
#define NUVSIM_COMMANDS_REQUEST_H_

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace NuvSim {

// Receiver of the lines. The views are valid during the call only.
class LineSink {
 public:
  virtual ~LineSink() = default;

  // A line that begins with "F" and a digit, without its line end.
  virtual void OnCommand(std::string_view line) = 0;

  // Any other line as received, with its line end (none for what the sender left unfinished).
  virtual void OnData(std::string_view line) = 0;

  // A data line of `bytes`, line end included, that was longer than the longest one kept.
  virtual void OnLostData(uint64_t bytes) = 0;
};

// Splits what a printer receives into command lines and job lines.
//
// Memory is bounded by the longest job line that is kept; time is linear in the bytes fed.
// Thread-safety: none; the owner serialises calls.
class LineSplitter {
 public:
  // `longestData`: longest data line kept, in bytes with its line end. `sink` must outlive this.
  LineSplitter(uint64_t longestData, LineSink& sink);

  // Returns how many of the bytes were taken: those to the end of the first command, else all. What
  // follows a command may be no lines.
  size_t Feed(std::string_view bytes);

  // The sender is gone: what it left of a data line counts as a line, of a command is forgotten.
  void Finish();

 private:
  void Hold(std::string_view piece);
  bool Dispatch(std::string_view line);  // whether it was a command

  uint64_t longestData_;
  LineSink& sink_;
  std::string held_;        // the beginning of a line whose end has not come yet
  uint64_t discarded_ = 0;  // bytes of the current line that were not held
};

// A command line taken apart. The views are into the line.
struct Request {
  std::string_view head;                     // "F" and the code as it was sent
  int code = 0;                              // -1 when the code is no number that fits
  std::vector<std::string_view> parameters;  // split at blanks
  // What follows the first blank, as it was sent: names may hold anything. Unset without a blank.
  std::optional<std::string_view> rest;
};

Request ParseRequest(std::string_view line);

// The whole of `text` as a decimal number.
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text) {
  Number number{};
  const char* const last = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), last, number);
  if (text.empty() || parsed.ec != std::errc() || parsed.ptr != last) return std::nullopt;
  return number;
}

// The number behind the letter `tag` in the parameter at `place` (from 0), if there is one.
std::optional<int> TaggedNumber(const Request& request, size_t place, char tag);

// As above, of a request that has this one parameter.
std::optional<int> OnlyNumber(const Request& request, char tag);

// What follows `prefix` in `text`; empty when it does not begin so.
std::optional<std::string_view> Behind(std::string_view prefix, std::string_view text);

}  // namespace NuvSim

#endif  // NUVSIM_COMMANDS_REQUEST_H_
