// How far a transfer or a print is, shown while it runs.
#ifndef NUVCTL_PROGRESS_H_
#define NUVCTL_PROGRESS_H_

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "output.h"
#include "printer.h"
#include "system.h"

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

// "printing, layer 12 of 340, 34 %, 56 min left"; other states with nothing but what they tell.
std::string WatchText(const PrinterState& state, const std::optional<PrintProgress>& progress);

// The same, behind a bar while printing.
std::string WatchBar(const PrinterState& state, const std::optional<PrintProgress>& progress,
                     int width);

// One row of a terminal that is written over.
class LiveRow {
 public:
  explicit LiveRow(std::ostream& stream) : stream_(stream) {}

  void Draw(const std::string& row);
  // Leaves the cursor at the start of a line.
  void Finish();

 private:
  std::ostream& stream_;
  std::optional<size_t> columns_;  // of what is drawn
};

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
  void WriteLine();

  const ProgressStyle style_;
  std::ostream& err_;
  System& system_;
  LiveRow row_;
  int64_t startMs_;
  ProgressFigures figures_;
  bool updated_ = false;
  int lastTenth_ = -1;  // tens of percent of the last line
  int64_t lastLineSent_ = -1;
};

constexpr int kShortestIntervalMs = 1000;

// Asks the current printer every `interval_ms` and shows what has changed, until it neither prints
// nor receives: one row written over on a terminal, else a line or document per change. Throws
// CommandError when the printer reports an error or is lost.
// It asks instead of using the library's status thread, which tells neither errors nor the end, and
// writes a line of its own to the standard output.
void WatchPrint(Output& output, System& system, int intervalMs);

}  // namespace NuvCtl

#endif  // NUVCTL_PROGRESS_H_
