// Splits what a printer receives into command lines and job lines.
//
// Memory is bounded by the longest job line that is kept; time is linear in the bytes fed.
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_LINE_SPLITTER_H_
#define NUVSIM_LINE_SPLITTER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nuvsim {

// Receiver of the lines. The views are valid during the call only.
class LineSink {
 public:
  virtual ~LineSink() = default;

  // A line that begins with "F" and a digit, without its line end.
  virtual void OnCommand(std::string_view line) = 0;

  // Any other line as received, with its line end (none for what the sender left unfinished).
  virtual void OnData(std::string_view line) = 0;

  // A data line of `bytes`, line end included, that was longer than the longest one kept.
  virtual void OnLostData(std::uint64_t bytes) = 0;
};

// Bytes of the line end: 2 for CR LF, 1 for a bare LF, 0 for none.
std::size_t LineEndLength(std::string_view line);

class LineSplitter {
 public:
  // `longestData`: longest data line kept, in bytes with its line end. `sink` must outlive this.
  LineSplitter(std::uint64_t longestData, LineSink& sink);

  // Returns how many of the bytes were taken: those to the end of the first command, else all. What
  // follows a command may be no lines.
  std::size_t Feed(std::string_view bytes);

  // The sender is gone: what it left of a data line counts as a line, of a command is forgotten.
  void Finish();

 private:
  void Hold(std::string_view piece);
  bool Dispatch(std::string_view line);  // whether it was a command

  std::uint64_t longestData_;
  LineSink& sink_;
  std::string held_;             // the beginning of a line whose end has not come yet
  std::uint64_t discarded_ = 0;  // bytes of the current line that were not held
};

}  // namespace nuvsim

#endif  // NUVSIM_LINE_SPLITTER_H_
