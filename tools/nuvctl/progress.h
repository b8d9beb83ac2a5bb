// How far a transfer is, shown while it runs.
#ifndef NUVCTL_PROGRESS_H_
#define NUVCTL_PROGRESS_H_

#include <cstdint>
#include <ostream>
#include <string>

#include "system.h"

namespace nuvctl {

struct ProgressFigures {
  int64_t total = 0;  // bytes
  int64_t sent = 0;
  int64_t elapsed_ms = 0;
};

// Whole percent, rounded down, so that 100 means all; within 0 to 100 whatever the figures.
int Percent(const ProgressFigures& figures);

// " 42%  1.2 MB of 3.0 MB  35.0 kB/s  1:23 left"; rate and time left only when they are known.
std::string ProgressText(const ProgressFigures& figures);

// The same behind a bar, in at most `width` columns: the bar gives way first, then the text's end.
std::string ProgressBar(const ProgressFigures& figures, int width);

enum class ProgressStyle {
  kSilent,
  kLines,  // one line at the start, at every ten percent and at the end: for logs
  kBar     // one line that is written over: for terminals
};

// Shows the progress of one transfer on `err`. Not thread-safe.
class ProgressView {
 public:
  ProgressView(ProgressStyle style, std::ostream& err, System& system);

  // The transfer starts; the rate counts from here.
  void Start();
  void Update(int64_t total, int64_t sent);
  // The transfer ended, wherever it is; leaves the cursor at the start of a line.
  void Finish();

  // Milliseconds since Start, or since construction before it.
  int64_t ElapsedMs() const;

 private:
  void DrawBar();
  void WriteLine();

  const ProgressStyle style_;
  std::ostream& err_;
  System& system_;
  int64_t start_ms_;
  ProgressFigures figures_;
  bool updated_ = false;
  int last_tenth_ = -1;  // tens of percent of the last line
  int64_t last_line_sent_ = -1;
  size_t drawn_columns_ = 0;
};

}  // namespace nuvctl

#endif  // NUVCTL_PROGRESS_H_
