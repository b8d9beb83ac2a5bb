// What a printer receives besides lines: announced print files, keys and records of job headers,
// thumbnails and firmware images.
//
// Bytes go straight to files, so an item may be larger than memory.
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_INTAKE_H_
#define NUVSIM_INTAKE_H_

#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/raw_phase.h"
#include "nuvsim/sha1.h"
#include "nuvsim/types.h"

namespace nuvsim {

class Intake final : private RawSink {
 public:
  // Files are <folder>/<prefix>-<kind>.bin, of a thumbnail .png; the newest of a kind is kept.
  Intake(std::filesystem::path folder, std::string prefix);

  // A print file that a host has announced without sending it.
  void NotePrintFile(std::uint64_t bytes, std::string name, std::string digest);

  // Each makes the bytes behind the command under way a phase; `name` is the host's. The phase
  // begins when the owner takes it, until then nothing is noted.
  void ExpectHeader(int job, bool hasKey, std::vector<std::string> records);
  void ExpectFrames(std::string kind, std::uint64_t bytes, std::string name);
  void ExpectImage(std::string kind, std::uint64_t bytes, std::string name);
  // The phase that was asked for since the last call; null when there is none.
  std::unique_ptr<RawPhase> TakePhase();
  void ForgetPhase() { next_ = nullptr; }

  // The newest item of a kind; null before the first.
  ReceivedItem* Last(std::string_view kind);
  // In order of arrival.
  std::vector<ReceivedItem> Items() const { return {items_.begin(), items_.end()}; }

  // Makes what was received visible to readers of the files.
  void Flush();
  std::uint64_t WriteErrors() const { return writeErrors_; }

 private:
  void OnItem(const std::string& kind, std::uint64_t announcedBytes) override;
  void OnBlock(std::uint32_t payloadBytes) override;
  void OnBytes(std::string_view bytes) override;
  void OnItemEnd() override;
  RawSink& Sink() { return *this; }
  ReceivedItem& Add(const std::string& kind, std::uint64_t announcedBytes);

  std::filesystem::path folder_;
  std::string prefix_;
  std::deque<ReceivedItem> items_;
  std::function<std::unique_ptr<RawPhase>()> next_;
  std::string name_;  // of the phase's item
  int job_ = 0;
  bool receiving_ = false;  // the newest item
  std::ofstream file_;
  Sha1 sha1_;
  std::uint64_t writeErrors_ = 0;
};

}  // namespace nuvsim

#endif  // NUVSIM_INTAKE_H_
