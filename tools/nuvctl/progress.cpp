#include "progress.h"

#include <algorithm>
#include <cmath>

#include "text.h"

namespace nuvctl {
namespace {

constexpr int kLargestBar = 40;
constexpr int kSmallestBar = 10;
constexpr int kBarFrame = 3;    // the brackets and a blank
constexpr int kUsualText = 52;  // kept free, so that the bar's length does not follow the text's
constexpr int64_t kLeastElapsedMs = 1000;  // a rate of less says nothing

std::string PadLeft(const std::string& text, size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

}  // namespace

int Percent(const ProgressFigures& figures) {
  if (figures.total <= 0 || figures.sent <= 0) return 0;
  return static_cast<int>(std::min<int64_t>(100, figures.sent * 100 / figures.total));
}

std::string ProgressText(const ProgressFigures& figures) {
  std::string text = PadLeft(std::to_string(Percent(figures)) + "%", 4) + "  " +
                     FormatBytes(figures.sent) + " of " + FormatBytes(figures.total);
  if (figures.sent <= 0 || figures.elapsed_ms < kLeastElapsedMs) return text;
  text += "  " + FormatBytes(figures.sent * 1000 / figures.elapsed_ms) + "/s";
  if (figures.sent < figures.total) {
    // In floating point: the product of bytes and milliseconds may not fit 64 bits.
    const double left_ms = static_cast<double>(figures.total - figures.sent) *
                           static_cast<double>(figures.elapsed_ms) /
                           static_cast<double>(figures.sent);
    text += "  " + FormatDuration(std::llround(left_ms / 1000.0)) + " left";
  }
  return text;
}

std::string ProgressBar(const ProgressFigures& figures, int width) {
  const std::string text = ProgressText(figures);
  const int reserved = std::max(kUsualText, static_cast<int>(text.size()));
  const int cells = std::min(kLargestBar, width - reserved - kBarFrame);
  if (cells < kSmallestBar) return text.substr(0, static_cast<size_t>(std::max(width, 0)));
  const int full = cells * Percent(figures) / 100;
  return "[" + std::string(static_cast<size_t>(full), '#') +
         std::string(static_cast<size_t>(cells - full), '-') + "] " + text;
}

ProgressView::ProgressView(ProgressStyle style, std::ostream& err, System& system)
    : style_(style), err_(err), system_(system), start_ms_(system.NowMs()) {}

void ProgressView::Start() { start_ms_ = system_.NowMs(); }

int64_t ProgressView::ElapsedMs() const { return system_.NowMs() - start_ms_; }

void ProgressView::Update(int64_t total, int64_t sent) {
  figures_ = {total, sent, ElapsedMs()};
  updated_ = true;
  if (style_ == ProgressStyle::kBar) {
    DrawBar();
  } else if (Percent(figures_) / 10 > last_tenth_) {
    WriteLine();
  }
}

void ProgressView::Finish() {
  if (!updated_) return;
  if (style_ == ProgressStyle::kBar) {
    err_ << '\n' << std::flush;
  } else if (last_line_sent_ != figures_.sent) {
    WriteLine();
  }
}

void ProgressView::DrawBar() {
  // The last column stays free: writing it moves some terminals to the next line.
  const std::string line = ProgressBar(figures_, system_.ErrorWidth() - 1);
  const size_t left_over = drawn_columns_ > line.size() ? drawn_columns_ - line.size() : 0;
  err_ << '\r' << line << std::string(left_over, ' ') << std::flush;
  drawn_columns_ = line.size();
}

void ProgressView::WriteLine() {
  last_tenth_ = Percent(figures_) / 10;
  last_line_sent_ = figures_.sent;
  if (style_ == ProgressStyle::kLines) err_ << ProgressText(figures_) << '\n' << std::flush;
}

}  // namespace nuvctl
