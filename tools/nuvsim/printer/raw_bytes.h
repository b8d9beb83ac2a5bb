// What a printer receives besides lines, as raw bytes: keys and records of job headers, thumbnails
// and firmware images; and print files that are announced only.
//
// Bytes may come in pieces of any size. They go straight to files, so an item may be larger than
// memory. Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_PRINTER_RAW_BYTES_H_
#define NUVSIM_PRINTER_RAW_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/records.h"

namespace NuvSim {

// Receiver of what a phase holds: items, one after the other.
class RawSink {
 public:
  virtual ~RawSink() = default;
  virtual void OnItem(const std::string& kind, uint64_t announcedBytes) = 0;
  virtual void OnBlock(uint32_t payloadBytes) = 0;  // a frame of the item begins
  virtual void OnBytes(std::string_view bytes) = 0;
  virtual void OnItemEnd() = 0;  // whether or not all bytes have come
};

// A stretch of raw bytes on the wire. While it lasts, received bytes go here before they can be
// lines.
class RawPhase {
 public:
  explicit RawPhase(RawSink& sink) : sink_(sink) {}
  virtual ~RawPhase() = default;
  RawPhase(const RawPhase&) = delete;
  RawPhase& operator=(const RawPhase&) = delete;

  // Takes bytes from the front of `bytes` until the phase is over; returns how many. Some of them
  // may be held until it is clear whether they belong to the phase.
  size_t Take(std::string_view bytes);
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

  void Expect(uint64_t bytes) { left_ = bytes; }
  void End();
  const std::string& Undecided() const { return held_; }
  std::string TakeUndecided();

  RawSink& sink_;

 private:
  uint64_t left_ = 0;  // bytes of the current piece that are still to come
  std::string held_;
  bool over_ = false;
};

// What came, in order.
class Intake final : private RawSink {
 public:
  // Files are <folder>/<prefix>-<kind>.bin, of a thumbnail .png; the newest of a kind is kept.
  Intake(std::filesystem::path folder, std::string prefix);
  ~Intake() override;

  // A print file that a host has announced without sending it.
  void NotePrintFile(uint64_t bytes, std::string name, std::string digest);

  // Each makes the bytes behind the command under way a phase; `name` is the host's. The phase
  // begins when the owner takes it, until then nothing is noted.
  void ExpectHeader(int job, bool hasKey, std::vector<std::string> records);
  void ExpectFrames(std::string kind, uint64_t bytes, std::string name);
  void ExpectImage(std::string kind, uint64_t bytes, std::string name);
  // The phase that was asked for since the last call; null when there is none.
  std::unique_ptr<RawPhase> TakePhase();
  void ForgetPhase() { next_ = nullptr; }

  // The newest item of a kind; null before the first.
  ReceivedItem* Last(std::string_view kind);
  // In order of arrival.
  std::vector<ReceivedItem> Items() const { return {items_.begin(), items_.end()}; }

  // Makes what was received visible to readers of the files.
  void Flush();
  uint64_t WriteErrors() const { return writeErrors_; }

 private:
  class Digest;

  void OnItem(const std::string& kind, uint64_t announcedBytes) override;
  void OnBlock(uint32_t payloadBytes) override;
  void OnBytes(std::string_view bytes) override;
  void OnItemEnd() override;
  RawSink& Sink() { return *this; }
  ReceivedItem& Add(const std::string& kind, uint64_t announcedBytes);

  std::filesystem::path folder_;
  std::string prefix_;
  std::deque<ReceivedItem> items_;
  std::function<std::unique_ptr<RawPhase>()> next_;
  std::string name_;  // of the phase's item
  int job_ = 0;
  bool receiving_ = false;  // the newest item
  std::ofstream file_;
  std::unique_ptr<Digest> digest_;  // of the item's payload
  uint64_t writeErrors_ = 0;
};

}  // namespace NuvSim

#endif  // NUVSIM_PRINTER_RAW_BYTES_H_
