// The printer's receive buffer, as far as a host can see it: job lines fill it, time drains it.
//
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_RECEIVE_BUFFER_H_
#define NUVSIM_RECEIVE_BUFFER_H_

#include <chrono>
#include <cstdint>

namespace nuvsim {

class ReceiveBuffer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // `capacity` in bytes; `drainRate` in bytes per second, 0 for a buffer that never drains.
  ReceiveBuffer(std::uint64_t capacity, std::uint64_t drainRate, TimePoint now);

  std::uint64_t Capacity() const { return capacity_; }

  // Whole free bytes at `now`. Times may not run backwards from call to call.
  std::uint64_t FreeBytes(TimePoint now);

  // Takes `bytes` if they fit at `now`; false leaves the buffer as it is.
  bool Fill(std::uint64_t bytes, TimePoint now);

 private:
  void Drain(TimePoint now);

  std::uint64_t capacity_;
  double drainRate_;
  double filled_ = 0;
  TimePoint drainedUntil_;
};

}  // namespace nuvsim

#endif  // NUVSIM_RECEIVE_BUFFER_H_
