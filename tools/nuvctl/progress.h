// How far a transfer is, shown while it runs.
#ifndef NUVCTL_PROGRESS_H_
#define NUVCTL_PROGRESS_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "context.h"

namespace NuvCtl {

struct ProgressFigures {
  int64_t total = 0;  // bytes
  int64_t sent = 0;
  int64_t elapsedMs = 0;
};

// " 42%  1.2 MB of 3.0 MB  35.0 kB/s  1:23 left"; rate and time left only when they are known.
std::string ProgressText(const ProgressFigures& figures);

// The same behind a bar, in at most `width` columns: the bar gives way first, then the text's end.
std::string ProgressBar(const ProgressFigures& figures, int width);

// A bar and `text`, `gap` apart; room is kept for a text of `usualText` columns, so that the bar's
// length does not follow the text's.
std::string Bar(int percent, const std::string& gap, const std::string& text, size_t usualText,
                int width);

// Rows of a terminal that are written over.
class LiveRows {
 public:
  explicit LiveRows(std::ostream& stream) : stream_(stream) {}

  // `width`: columns of the terminal, which may have changed since.
  void Draw(const std::vector<std::string>& rows, int width);
  // Takes them away.
  void Clear(int width);
  // Leaves them, and the cursor at the start of a line.
  void Finish();

 private:
  void GoBack(int width);

  std::ostream& stream_;
  std::vector<size_t> drawn_;  // columns of each row
};

enum class ProgressStyle {
  kSilent,
  kFigures,  // "SENT TOTAL", bytes, at every percent: for programs
  kLines,    // one line at the start, at every ten percent and at the end: for logs
  kBar       // one line that is written over: for terminals
};

// Shows the progress of one transfer on standard error. Not thread-safe.
class ProgressView {
 public:
  ProgressView(ProgressStyle style, std::ostream& err, System& system);

  void Update(int64_t total, int64_t sent);
  // The transfer ended, wherever it is; leaves the cursor at the start of a line.
  void Finish();

  // Milliseconds since the first byte.
  int64_t ElapsedMs() const;

 private:
  int Step() const;
  void WriteLine();

  const ProgressStyle style_;
  std::ostream& err_;
  System& system_;
  LiveRows row_;
  int64_t startMs_;
  ProgressFigures figures_;
  bool updated_ = false;
  int lastStep_ = -1;  // of percent, at the last line
  int64_t lastLineSent_ = -1;
};

}  // namespace NuvCtl

#endif  // NUVCTL_PROGRESS_H_
