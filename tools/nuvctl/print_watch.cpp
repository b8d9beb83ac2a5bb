#include "print_watch.h"

#include <algorithm>

#include "error.h"
#include "nuvconnect/NuvConnect5.h"
#include "stream.h"

namespace nuvctl {
namespace {

constexpr int kLargestBar = 40;
constexpr int kSmallestBar = 10;
constexpr int kBarFrame = 4;    // brackets and the blanks around them
constexpr int kUsualText = 54;  // kept free, so that the bar's length does not follow the text's

// Shows one moment after the other, each once.
class WatchView {
 public:
  explicit WatchView(Context& context)
      : context_(context), live_(!context.options.json && context.system.OutputIsTerminal()) {}

  ~WatchView() {
    if (columns_ > 0) context_.out << '\n' << std::flush;
  }
  WatchView(const WatchView&) = delete;
  WatchView& operator=(const WatchView&) = delete;

  void Show(const PrinterState& state, const std::optional<PrintProgress>& progress) {
    const std::string text = WatchText(state, progress);
    if (text == shown_) return;
    shown_ = text;
    if (live_) {
      // The last column stays free: writing it moves some terminals to the next line.
      DrawRow(WatchRow(state, progress, context_.system.OutputWidth() - 1));
    } else {
      Stream(context_, {text + '\n', StateJson(state, progress)});
    }
  }

 private:
  void DrawRow(const std::string& row) {
    const std::size_t left_over = columns_ > row.size() ? columns_ - row.size() : 0;
    context_.out << '\r' << row << std::string(left_over, ' ') << std::flush;
    columns_ = row.size();
  }

  Context& context_;
  const bool live_;
  std::string shown_;
  std::size_t columns_ = 0;  // of the row on the terminal
};

}  // namespace

std::string WatchText(const PrinterState& state, const std::optional<PrintProgress>& progress) {
  std::string text = StateName(state.number);
  if (state.number == NUV_PRINTER_ERROR) text += " " + std::to_string(state.error_number);
  if (!progress) return text;
  return text + ", layer " + LayerText(*progress) + ", " + std::to_string(progress->percent) +
         " %, " + std::to_string(progress->minutes_left) + " min left";
}

std::string WatchRow(const PrinterState& state, const std::optional<PrintProgress>& progress,
                     int width) {
  const std::string text = WatchText(state, progress);
  const int reserved = std::max(kUsualText, static_cast<int>(text.size()));
  const int cells = std::min(kLargestBar, width - reserved - kBarFrame);
  if (!progress || cells < kSmallestBar) {
    return text.substr(0, static_cast<std::size_t>(std::max(width, 0)));
  }
  const int full = cells * std::clamp(progress->percent, 0, 100) / 100;
  return "[" + std::string(static_cast<std::size_t>(full), '#') +
         std::string(static_cast<std::size_t>(cells - full), '-') + "]  " + text;
}

void WatchPrint(Context& context, int interval_ms) {
  WatchView view(context);
  for (;; context.system.SleepMs(interval_ms)) {
    const PrinterState state = ReadState();
    std::optional<PrintProgress> progress;
    if (state.number == NUV_PRINTER_PRINTING) {
      progress = ReadProgress();
      if (!progress) continue;  // has ended since; the next look tells what it is now
    }
    view.Show(state, progress);
    if (state.number == NUV_PRINTER_ERROR) {
      throw CommandError("printer_error", kPrinterFailed,
                         "The printer reports error " + std::to_string(state.error_number),
                         "Look at the printer's panel.");
    }
    if (state.number != NUV_PRINTER_PRINTING && state.number != NUV_PRINTER_RECEIVING) return;
  }
}

}  // namespace nuvctl
