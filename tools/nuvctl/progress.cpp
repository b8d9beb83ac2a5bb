#include "progress.h"

#include <algorithm>
#include <cmath>

#include "error.h"
#include "format.h"
#include "nuvconnect/NuvConnect5.h"

namespace NuvCtl {
namespace {

constexpr int64_t kLeastElapsedMs = 1000;  // a rate of less says nothing

// Columns kept free, so that the bar's length does not follow the text's.
constexpr size_t kUsualProgressText = 52;
constexpr size_t kUsualWatchText = 54;

// A bar and `text`, `gap` apart.
std::string Bar(int percent, const std::string& gap, const std::string& text, size_t usualText,
                int width) {
  constexpr size_t kLargest = 40;
  constexpr size_t kSmallest = 10;
  constexpr size_t kBrackets = 2;
  const auto columns = static_cast<size_t>(std::max(width, 0));
  const size_t reserved = std::max(usualText, text.size()) + kBrackets + gap.size();
  if (columns < reserved + kSmallest) return text.substr(0, columns);
  const size_t cells = std::min(kLargest, columns - reserved);
  const size_t full = cells * static_cast<size_t>(std::clamp(percent, 0, 100)) / 100;
  return "[" + std::string(full, '#') + std::string(cells - full, '-') + "]" + gap + text;
}

// Whole percent, rounded down, so that 100 means all; within 0 to 100 whatever the figures.
int Percent(const ProgressFigures& figures) {
  if (figures.total <= 0 || figures.sent <= 0) return 0;
  return static_cast<int>(std::min<int64_t>(100, figures.sent * 100 / figures.total));
}

std::string PadLeft(const std::string& text, size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

// Shows one moment of a print after the other, each once.
class WatchView {
 public:
  WatchView(Output& output, System& system)
      : output_(output),
        system_(system),
        live_(!output.Json() && system.OutputIsTerminal()),
        row_(output.Out()) {}
  ~WatchView() { row_.Finish(); }
  WatchView(const WatchView&) = delete;
  WatchView& operator=(const WatchView&) = delete;

  void Show(const PrinterState& state, const std::optional<PrintProgress>& progress) {
    const std::string text = WatchText(state, progress);
    if (text == shown_) return;
    shown_ = text;
    if (live_) {
      row_.Draw(WatchBar(state, progress, system_.OutputWidth() - 1));
    } else {
      output_.Stream({text + '\n', StateJson(state, progress)});
    }
  }

 private:
  Output& output_;
  System& system_;
  const bool live_;
  LiveRow row_;
  std::string shown_;
};

}  // namespace

std::string ProgressText(const ProgressFigures& figures) {
  std::string text = PadLeft(std::to_string(Percent(figures)) + "%", 4) + "  " +
                     FormatBytes(figures.sent) + " of " + FormatBytes(figures.total);
  if (figures.sent <= 0 || figures.elapsedMs < kLeastElapsedMs) return text;
  text += "  " + FormatBytes(figures.sent * 1000 / figures.elapsedMs) + "/s";
  if (figures.sent < figures.total) {
    // In floating point: the product of bytes and milliseconds may not fit 64 bits.
    const double leftMs = static_cast<double>(figures.total - figures.sent) *
                          static_cast<double>(figures.elapsedMs) /
                          static_cast<double>(figures.sent);
    text += "  " + FormatDuration(std::llround(leftMs / 1000.0)) + " left";
  }
  return text;
}

std::string ProgressBar(const ProgressFigures& figures, int width) {
  return Bar(Percent(figures), " ", ProgressText(figures), kUsualProgressText, width);
}

std::string WatchText(const PrinterState& state, const std::optional<PrintProgress>& progress) {
  std::string text = StateName(state.number);
  if (state.number == NUV_PRINTER_ERROR) text += " " + std::to_string(state.errorNumber);
  if (!progress) return text;
  return text + ", layer " + LayerText(*progress) + ", " + std::to_string(progress->percent) +
         " %, " + std::to_string(progress->minutesLeft) + " min left";
}

std::string WatchBar(const PrinterState& state, const std::optional<PrintProgress>& progress,
                     int width) {
  const std::string text = WatchText(state, progress);
  if (!progress) return text.substr(0, static_cast<size_t>(std::max(width, 0)));
  return Bar(progress->percent, "  ", text, kUsualWatchText, width);
}

void LiveRow::Draw(const std::string& row) {
  const size_t leftOver = std::max(columns_.value_or(0), row.size()) - row.size();
  stream_ << '\r' << row << std::string(leftOver, ' ') << std::flush;
  columns_ = row.size();
}

void LiveRow::Finish() {
  if (columns_) stream_ << '\n' << std::flush;
}

ProgressView::ProgressView(ProgressStyle style, std::ostream& err, System& system)
    : style_(style), err_(err), system_(system), row_(err), startMs_(system.NowMs()) {}

void ProgressView::Start() { startMs_ = system_.NowMs(); }

int64_t ProgressView::ElapsedMs() const { return system_.NowMs() - startMs_; }

void ProgressView::Update(int64_t total, int64_t sent) {
  figures_ = {total, sent, ElapsedMs()};
  updated_ = true;
  if (style_ == ProgressStyle::kBar) {
    // The last column stays free: writing it moves some terminals to the next line.
    row_.Draw(ProgressBar(figures_, system_.ErrorWidth() - 1));
  } else if (Percent(figures_) / 10 > lastTenth_) {
    WriteLine();
  }
}

void ProgressView::Finish() {
  row_.Finish();
  if (updated_ && style_ != ProgressStyle::kBar && lastLineSent_ != figures_.sent) WriteLine();
}

void ProgressView::WriteLine() {
  lastTenth_ = Percent(figures_) / 10;
  lastLineSent_ = figures_.sent;
  if (style_ == ProgressStyle::kLines) err_ << ProgressText(figures_) << '\n' << std::flush;
}

void WatchPrint(Output& output, System& system, int intervalMs) {
  WatchView view(output, system);
  for (;; system.SleepMs(intervalMs)) {
    const PrinterState state = ReadState();
    std::optional<PrintProgress> progress;
    if (state.number == NUV_PRINTER_PRINTING) {
      progress = ReadProgress();
      if (!progress) continue;  // has ended since; the next look tells what it is now
    }
    view.Show(state, progress);
    if (state.number == NUV_PRINTER_ERROR) {
      throw CommandError("printer_error", kPrinterFailed,
                         "The printer reports error " + std::to_string(state.errorNumber),
                         "Look at the printer's panel.");
    }
    if (state.number != NUV_PRINTER_PRINTING && state.number != NUV_PRINTER_RECEIVING) return;
  }
}

}  // namespace NuvCtl
