#include "nuvsim/commands/dialogue.h"

#include <algorithm>
#include <utility>

#include "nuvsim/commands/table.h"
#include "nuvsim/faults/replies.h"

namespace NuvSim {
namespace {

// A host that polls for days must not exhaust the memory.
constexpr size_t kRequestsKept = 100000;

// A sender of raw bytes that is silent for so long has given up.
constexpr std::chrono::seconds kSilence{1};

// Whether a host takes the command for accepted although this happens to the answer. If not, it
// goes on with lines.
bool LeavesAccepted(FaultKind kind) {
  return kind == FaultKind::kLate || kind == FaultKind::kPieces || kind == FaultKind::kTwice ||
         kind == FaultKind::kBadNumber || kind == FaultKind::kOversized;
}

Closing ClosingOf(FaultKind cut) {
  if (cut == FaultKind::kGoneAfter) return Closing::kGone;
  return cut == FaultKind::kDropAfter ? Closing::kDrop : Closing::kReset;
}

constexpr size_t Index(Channel channel) { return static_cast<size_t>(channel); }

// Whether the answer tells how much fits in the buffer; a model may lack one of the two queries.
bool TellsBuffer(int code, const std::string& answer) {
  return (code == 117 || code == 503) && answer.find(" S:") != std::string::npos;
}

}  // namespace

Dialogue::Dialogue(PrinterConfig config, Clock clock, CalendarTime switchedOn,
                   std::filesystem::path folder, std::string prefix, Log log)
    : machine_(std::move(config), std::move(clock), switchedOn, std::move(folder),
               std::move(prefix)),
      splitters_{LineSplitter(machine_.Config().bufferBytes, *this),
                 LineSplitter(machine_.Config().bufferBytes, *this)},
      log_(std::move(log)) {
  for (const Fault& fault : machine_.Config().faults) faults_.Add(fault);
}

void Dialogue::ClientCame(Channel channel, uint32_t at) {
  if (channel == Channel::kNetwork) machine_.SetWiredAddress(at);
  ++counters_.connections;
  connected_[Index(channel)] = true;
}

void Dialogue::ClientLeft(Channel channel) {
  if (phase_ && phaseChannel_ == channel) {
    phase_->Stop();
    phase_.reset();  // with what may have become a record's head
  }
  splitters_[Index(channel)].Finish();
  machine_.FlushFiles();
  connected_[Index(channel)] = false;
  if (std::exchange(ending_[Index(channel)], false)) ++counters_.connectionsEnded;
}

Reaction Dialogue::Receive(Channel channel, std::string_view bytes) {
  reaction_ = Reaction();
  EndSilentPhase();
  while (!bytes.empty() && reaction_.closing == Closing::kNone && !reaction_.stall) {
    const uint64_t beforeCut = faults_.BytesBeforeCut();
    const size_t taken = TakeSome(
        channel, bytes.substr(0, static_cast<size_t>(std::min<uint64_t>(beforeCut, bytes.size()))));
    bytes.remove_prefix(taken);
    reaction_.taken += taken;
    counters_.bytesReceived += taken;
    const auto cut = faults_.CountBytes(taken);
    if (commandCame_) faults_.CommandCame(*std::exchange(commandCame_, std::nullopt));
    if (!cut || reaction_.closing != Closing::kNone) continue;
    if (cut->kind == FaultKind::kStall) {
      reaction_.stall = cut->delay;
    } else {
      reaction_.closing = ClosingOf(cut->kind);
    }
  }
  ending_[Index(channel)] = reaction_.closing != Closing::kNone;
  machine_.FlushFiles();
  return std::move(reaction_);
}

// Takes bytes from the front, up to the end of a command or of a stretch of raw bytes at the most.
size_t Dialogue::TakeSome(Channel channel, std::string_view bytes) {
  if (!phase_ || phaseChannel_ != channel) {
    commandChannel_ = channel;
    return splitters_[Index(channel)].Feed(bytes);
  }
  const size_t taken = phase_->Take(bytes);
  lastRaw_ = machine_.Now();
  if (phase_->IsOver()) EndPhase();
  return taken;
}

void Dialogue::EndPhase() {
  if (!phase_) return;
  phase_->Stop();
  const std::string held = phase_->Held();
  phase_.reset();
  for (size_t at = 0; at < held.size();) {
    at += TakeSome(phaseChannel_, std::string_view(held).substr(at));
  }
}

void Dialogue::EndSilentPhase() {
  if (phase_ && phase_->EndsInSilence() && machine_.Now() - lastRaw_ >= kSilence) EndPhase();
}

void Dialogue::OnCommand(std::string_view line) {
  ++counters_.requests;
  requests_.emplace_back(line);
  if (requests_.size() > kRequestsKept) requests_.pop_front();
  if (log_) log_(false, line);

  const Request request = ParseRequest(line);
  commandCame_ = request.code;
  machine_.GetIntake().ForgetPhase();
  std::string answer = Answer(machine_, request);
  if (TellsBuffer(request.code, answer) && faults_.TakeBufferFull(request.code)) {
    answer = ReplaceField(answer, "S", "0");
  }
  if (const auto fault = faults_.TakeForAnswer(request.code)) {
    AnswerWithFault(*fault, answer, reaction_);
    LogAnswer(answer, std::string("(fault ") + FaultName(fault->kind) + ") ");
    if (!LeavesAccepted(fault->kind)) machine_.GetIntake().ForgetPhase();
  } else {
    AnswerProperly(answer, reaction_);
    LogAnswer(answer, "");
  }
  if (auto phase = machine_.GetIntake().TakePhase()) {
    phase_ = std::move(phase);
    phaseChannel_ = commandChannel_;
  }
  lastRaw_ = machine_.Now();
}

// An entry for each line of the answer.
void Dialogue::LogAnswer(const std::string& answer, const std::string& remark) {
  if (!log_) return;
  for (size_t start = 0; start != std::string::npos;) {
    const size_t end = answer.find(kLineEnd, start);
    log_(true, remark + answer.substr(start, end - start));
    start = end == std::string::npos ? end : end + kLineEnd.size();
  }
}

void Dialogue::OnData(std::string_view line) { machine_.TakeLine(line); }

void Dialogue::OnLostData(uint64_t bytes) { machine_.LoseLine(bytes); }

std::vector<Fault> Dialogue::TakeSearch() {
  ++counters_.searches;
  return faults_.TakeForSearch();
}

std::vector<ReceivedItem> Dialogue::Received() {
  EndSilentPhase();
  return machine_.GetIntake().Items();
}

Counters Dialogue::Totals() {
  Counters totals = counters_;
  // Asking for the jobs brings the printing up to date.
  totals.writeErrors = machine_.Jobs().WriteErrors() + machine_.GetIntake().WriteErrors();
  const Counters& jobs = machine_.JobCounters();
  totals.jobsAccepted = jobs.jobsAccepted;
  totals.jobsFinished = jobs.jobsFinished;
  totals.jobsAbandoned = jobs.jobsAbandoned;
  totals.overruns = jobs.overruns;
  totals.overrunBytes = jobs.overrunBytes;
  totals.faultsApplied = faults_.Applied();
  return totals;
}

PrinterStatus Dialogue::Status() {
  PrinterStatus status;
  status.state = machine_.CurrentState();
  status.errorNumber = machine_.ErrorNumber();
  if (const auto progress = machine_.Printing()) status.layer = progress->layer;
  status.freeBytes = machine_.FreeBytes();
  status.connected = connected_[Index(Channel::kNetwork)];
  status.attached = connected_[Index(Channel::kUsb)];
  status.armedFaults = faults_.Size();
  return status;
}

std::optional<std::chrono::nanoseconds> Dialogue::TimeToNextStep() {
  EndSilentPhase();
  std::optional<std::chrono::nanoseconds> next = machine_.TimeToNextStep();
  if (phase_ && phase_->EndsInSilence()) {
    const std::chrono::nanoseconds left = lastRaw_ + kSilence - machine_.Now();
    next = std::min(next.value_or(left), left);
  }
  return next;
}

}  // namespace NuvSim
