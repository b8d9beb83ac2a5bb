// The dialogue of one printer with its hosts: received bytes in, answers out, faults included.
// Endpoints carry the bytes; this class knows no sockets.
//
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_COMMANDS_DIALOGUE_H_
#define NUVSIM_COMMANDS_DIALOGUE_H_

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/commands/request.h"
#include "nuvsim/config.h"
#include "nuvsim/faults/armed.h"
#include "nuvsim/printer/machine.h"
#include "nuvsim/printer/raw_bytes.h"
#include "nuvsim/records.h"
#include "nuvsim/wire.h"

namespace NuvSim {

class Dialogue final : private LineSink {
 public:
  using Log = std::function<void(bool isReply, std::string_view text)>;

  // `log` may be empty. See Machine for the rest.
  Dialogue(PrinterConfig config, Clock clock, CalendarTime switchedOn, std::filesystem::path folder,
           std::string prefix, Log log);

  // A client came (to the printer's address `at` when over the network), sent bytes, went; there
  // may be one on each channel. Once a reaction ends the connection, what followed in the same
  // bytes is void and the client counts as gone.
  void ClientCame(Channel channel, uint32_t at);
  Reaction Receive(Channel channel, std::string_view bytes);
  void AnswerSent() { ++counters_.answersSent; }
  void ClientLeft(Channel channel);

  // See Wire.
  std::optional<std::chrono::milliseconds> TakeRefusal() { return faults_.TakeRefusal(); }

  // A search came: the faults that apply to its answer.
  std::vector<Fault> TakeSearch();

  Machine& GetMachine() { return machine_; }
  FaultList& Faults() { return faults_; }

  // The newest command lines in order of arrival, without line ends.
  std::vector<std::string> Requests() const { return {requests_.begin(), requests_.end()}; }
  std::vector<ReceivedItem> Received();
  Counters Totals();
  PrinterStatus Status();

  // Time until something happens by itself: the printing takes a step, or silence ends a stretch
  // of raw bytes. Empty when nothing is due.
  std::optional<std::chrono::nanoseconds> TimeToNextStep();

 private:
  void OnCommand(std::string_view line) override;
  void OnData(std::string_view line) override;
  void OnLostData(uint64_t bytes) override;
  size_t TakeSome(Channel channel, std::string_view bytes);
  void EndPhase();
  void EndSilentPhase();
  void LogAnswer(const std::string& answer, const std::string& remark);

  Machine machine_;
  FaultList faults_;
  std::array<LineSplitter, kChannels> splitters_;  // a line stays whole, whatever comes beside it
  std::unique_ptr<RawPhase> phase_;                // null while lines come
  Channel phaseChannel_ = Channel::kNetwork;       // where the raw bytes come from
  Channel commandChannel_ = Channel::kNetwork;     // of the bytes being taken
  std::optional<int> commandCame_;                 // in them; its bytes are not counted yet
  std::chrono::steady_clock::time_point lastRaw_;
  Log log_;
  std::deque<std::string> requests_;
  Counters counters_;  // of the wire; jobs are counted by the machine
  std::array<bool, kChannels> connected_{};
  std::array<bool, kChannels> ending_{};  // by the printer
  Reaction reaction_;                     // being built
};

}  // namespace NuvSim

#endif  // NUVSIM_COMMANDS_DIALOGUE_H_
