#include "nuvsim/receive_buffer.h"

#include <algorithm>
#include <cmath>

namespace nuvsim {

ReceiveBuffer::ReceiveBuffer(std::uint64_t capacity, std::uint64_t drainRate, TimePoint now)
    : capacity_(capacity), drainRate_(static_cast<double>(drainRate)), drainedUntil_(now) {}

void ReceiveBuffer::Drain(TimePoint now) {
  if (now <= drainedUntil_) return;
  const std::chrono::duration<double> elapsed = now - drainedUntil_;
  filled_ = std::max(0.0, filled_ - elapsed.count() * drainRate_);
  drainedUntil_ = now;
}

std::uint64_t ReceiveBuffer::FreeBytes(TimePoint now) {
  Drain(now);
  // Fractions of a byte come from rounding; a thousandth must not cost a whole one.
  const auto used = static_cast<std::uint64_t>(std::ceil(filled_ - 0.001));
  return capacity_ - std::min(used, capacity_);
}

bool ReceiveBuffer::Fill(std::uint64_t bytes, TimePoint now) {
  if (bytes > FreeBytes(now)) return false;
  filled_ += static_cast<double>(bytes);
  return true;
}

}  // namespace nuvsim
