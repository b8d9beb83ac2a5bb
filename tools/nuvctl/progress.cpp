#include "progress.h"

#include <algorithm>
#include <cmath>

#include "format.h"
#include "utf8.h"

namespace NuvCtl {
namespace {

constexpr int64_t kLeastElapsedMs = 1000;  // a rate of less says nothing
constexpr size_t kUsualProgressText = 52;

// Whole percent, rounded down, so that 100 means all; within 0 to 100 whatever the figures.
int Percent(const ProgressFigures& figures) {
  if (figures.total <= 0 || figures.sent <= 0) return 0;
  return static_cast<int>(std::min<int64_t>(100, figures.sent * 100 / figures.total));
}

std::string PadLeft(const std::string& text, size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

std::string Bar(int percent, const std::string& gap, const std::string& text, size_t usualText,
                int width) {
  constexpr size_t kLargest = 40;
  constexpr size_t kSmallest = 10;
  constexpr size_t kBrackets = 2;
  const auto columns = static_cast<size_t>(std::max(width, 0));
  const size_t reserved = std::max(usualText, DisplayWidth(text)) + kBrackets + gap.size();
  if (columns < reserved + kSmallest) return FirstColumns(text, columns);
  const size_t cells = std::min(kLargest, columns - reserved);
  const size_t full = cells * static_cast<size_t>(std::clamp(percent, 0, 100)) / 100;
  return "[" + std::string(full, '#') + std::string(cells - full, '-') + "]" + gap + text;
}

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

// A window that was made narrower has broken a row into several.
void LiveRows::GoBack(int width) {
  const auto columns = static_cast<size_t>(std::max(width, 1));
  size_t lines = 0;
  for (const size_t row : drawn_) lines += std::max<size_t>(1, (row + columns - 1) / columns);
  stream_ << '\r';
  if (lines > 1) stream_ << "\x1b[" << lines - 1 << 'A';
}

void LiveRows::Draw(const std::vector<std::string>& rows, int width) {
  GoBack(width);
  drawn_.clear();
  for (const std::string& row : rows) {
    stream_ << (drawn_.empty() ? "" : "\n") << row << "\x1b[K";
    drawn_.push_back(DisplayWidth(row));
  }
  stream_ << "\x1b[J" << std::flush;
}

void LiveRows::Clear(int width) {
  if (drawn_.empty()) return;
  GoBack(width);
  stream_ << "\x1b[J" << std::flush;
  drawn_.clear();
}

void LiveRows::Finish() {
  if (!drawn_.empty()) stream_ << '\n' << std::flush;
  drawn_.clear();
}

ProgressView::ProgressView(ProgressStyle style, std::ostream& err, System& system)
    : style_(style), err_(err), system_(system), row_(err), startMs_(system.NowMs()) {}

int64_t ProgressView::ElapsedMs() const { return system_.NowMs() - startMs_; }

void ProgressView::Update(int64_t total, int64_t sent) {
  if (!updated_) startMs_ = system_.NowMs();
  figures_ = {total, sent, ElapsedMs()};
  updated_ = true;
  if (style_ == ProgressStyle::kBar) {
    // The last column stays free: writing it moves some terminals to the next line.
    const int width = system_.ErrorWidth();
    row_.Draw({ProgressBar(figures_, width - 1)}, width);
  } else if (Step() > lastStep_) {
    WriteLine();
  }
}

void ProgressView::Finish() {
  row_.Finish();
  if (updated_ && style_ != ProgressStyle::kBar && lastLineSent_ != figures_.sent) WriteLine();
}

int ProgressView::Step() const {
  constexpr int kTenth = 10;
  return Percent(figures_) / (style_ == ProgressStyle::kLines ? kTenth : 1);
}

void ProgressView::WriteLine() {
  lastStep_ = Step();
  lastLineSent_ = figures_.sent;
  if (style_ == ProgressStyle::kSilent) return;
  if (style_ == ProgressStyle::kLines) {
    err_ << ProgressText(figures_);
  } else {
    err_ << figures_.sent << ' ' << figures_.total;
  }
  err_ << '\n' << std::flush;
}

}  // namespace NuvCtl
