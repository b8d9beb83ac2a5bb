// Stretches of raw bytes on the wire: the header of a job, a thumbnail, a firmware image. While one
// lasts, received bytes go here before they can be lines.
//
// Bytes may come in pieces of any size. Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_RAW_PHASE_H_
#define NUVSIM_RAW_PHASE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nuvsim {

// Receiver of what a phase holds: items, one after the other.
class RawSink {
 public:
  virtual ~RawSink() = default;
  virtual void OnItem(const std::string& kind, std::uint64_t announcedBytes) = 0;
  virtual void OnBlock(std::uint32_t payloadBytes) = 0;  // a frame of the item begins
  virtual void OnBytes(std::string_view bytes) = 0;
  virtual void OnItemEnd() = 0;  // whether or not all bytes have come
};

class RawPhase {
 public:
  explicit RawPhase(RawSink& sink) : sink_(sink) {}
  virtual ~RawPhase() = default;
  RawPhase(const RawPhase&) = delete;
  RawPhase& operator=(const RawPhase&) = delete;

  // Takes bytes from the front of `bytes` until the phase is over; returns how many. Some of them
  // may be held until it is clear whether they belong to the phase.
  std::size_t Take(std::string_view bytes);
  bool IsOver() const { return over_; }

  // Ends the phase where it is: the sender is gone or silent.
  void Stop();
  // Once it is over: the bytes that were held and belong to the lines behind the phase.
  const std::string& Held() const { return held_; }

  // Whether silence ends the phase: a sender that has begun something has to go on with it.
  virtual bool EndsInSilence() const { return left_ > 0; }

 protected:
  // Bytes held at a place where something may begin: announces it, ends the phase, or waits.
  virtual void Decide() = 0;
  // All bytes that Expect() announced have come.
  virtual void PieceCame() = 0;

  void Expect(std::uint64_t bytes) { left_ = bytes; }
  void End();
  const std::string& Undecided() const { return held_; }
  std::string TakeUndecided();

  RawSink& sink_;

 private:
  std::uint64_t left_ = 0;  // bytes of the current piece that are still to come
  std::string held_;
  bool over_ = false;
};

// What comes behind the opening of a job: perhaps the key, 32 bytes without a name; then records
// (name of four characters, length as 4 bytes little-endian, payload), each once at most. Anything
// else is a line again.
class HeaderPhase final : public RawPhase {
 public:
  HeaderPhase(RawSink& sink, bool hasKey, std::vector<std::string> records);

 private:
  void Decide() override;
  void PieceCame() override;
  void DecideRecord();

  bool mayBeKey_;
  std::vector<std::string> records_;  // that have not come
};

// An item of a known length in frames: "L105", payload length as 4 bytes little-endian, payload.
class FramedPhase final : public RawPhase {
 public:
  FramedPhase(RawSink& sink, const std::string& kind, std::uint64_t bytes);
  bool EndsInSilence() const override { return true; }

 private:
  void Decide() override;
  void PieceCame() override;

  std::uint64_t itemLeft_;  // payload bytes that no frame has announced yet
};

// An item of a known length as it is.
class ImagePhase final : public RawPhase {
 public:
  // `bytes` is above 0.
  ImagePhase(RawSink& sink, const std::string& kind, std::uint64_t bytes);

 private:
  void Decide() override {}
  void PieceCame() override { End(); }
};

}  // namespace nuvsim

#endif  // NUVSIM_RAW_PHASE_H_
