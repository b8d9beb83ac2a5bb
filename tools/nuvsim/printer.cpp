#include "nuvsim/printer.h"

#include <algorithm>
#include <utility>

#include "nuvsim/commands.h"
#include "nuvsim/search_answers.h"

namespace nuvsim {
namespace {

// A host that polls for days must not exhaust the memory.
constexpr std::size_t kRequestsKept = 100000;

constexpr std::size_t Index(Channel channel) { return static_cast<std::size_t>(channel); }

// Whether the answer tells how much fits in the buffer; a model may lack one of the two queries.
bool TellsBuffer(int code, const std::string& answer) {
  return (code == 117 || code == 503) && answer.find(" S:") != std::string::npos;
}

}  // namespace

Printer::Printer(PrinterConfig config, Clock clock, CalendarTime switchedOn,
                 std::filesystem::path folder, std::string prefix, Log log)
    : machine_(std::move(config), std::move(clock), switchedOn, std::move(folder),
               std::move(prefix)),
      splitters_{LineSplitter(machine_.Config().bufferBytes, *this),
                 LineSplitter(machine_.Config().bufferBytes, *this)},
      log_(std::move(log)) {
  for (const Fault& fault : machine_.Config().faults) faults_.Add(fault);
}

void Printer::ClientCame(Channel channel, std::uint32_t at) {
  if (channel == Channel::kNetwork) machine_.SetWiredAddress(at);
  ++counters_.connections;
  connected_[Index(channel)] = true;
}

void Printer::ClientLeft(Channel channel) {
  splitters_[Index(channel)].Finish();
  machine_.FlushFiles();
  connected_[Index(channel)] = false;
}

Reaction Printer::Receive(Channel channel, std::string_view bytes) {
  reaction_ = Reaction();
  while (!bytes.empty() && reaction_.closing == Closing::kNone) {
    const std::uint64_t beforeCut = faults_.BytesBeforeCut();
    const std::string_view part =
        bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(beforeCut, bytes.size())));
    bytes.remove_prefix(part.size());
    counters_.bytesReceived += part.size();
    splitters_[Index(channel)].Feed(part);
    const Closing cut = faults_.CountBytes(part.size());
    if (reaction_.closing == Closing::kNone) reaction_.closing = cut;
  }
  machine_.FlushFiles();
  return std::move(reaction_);
}

bool Printer::OnCommand(std::string_view line) {
  ++counters_.requests;
  requests_.emplace_back(line);
  if (requests_.size() > kRequestsKept) requests_.pop_front();
  if (log_) log_(false, line);

  const Request request = ParseRequest(line);
  std::string answer = Answer(machine_, request);
  if (TellsBuffer(request.code, answer) && faults_.TakeBufferFull(request.code)) {
    answer = ReplaceField(answer, "S", "0");
  }
  if (const auto fault = faults_.TakeForAnswer(request.code)) {
    AnswerWithFault(*fault, answer, reaction_);
    LogAnswer(answer, std::string("(fault ") + FaultName(fault->kind) + ") ");
  } else {
    AnswerProperly(answer, reaction_);
    LogAnswer(answer, "");
  }
  return reaction_.closing == Closing::kNone;
}

// An entry for each line of the answer.
void Printer::LogAnswer(const std::string& answer, const std::string& remark) {
  if (!log_) return;
  for (std::size_t start = 0; start != std::string::npos;) {
    const std::size_t end = answer.find(kLineEnd, start);
    log_(true, remark + answer.substr(start, end - start));
    start = end == std::string::npos ? end : end + kLineEnd.size();
  }
}

void Printer::OnData(std::string_view line) { machine_.TakeLine(line); }

void Printer::OnLostData(std::uint64_t bytes) { machine_.LoseLine(bytes); }

std::vector<Delivery> Printer::ReceiveSearch(std::string_view datagram, const std::string& address,
                                             std::uint16_t port) {
  if (!IsSearch(datagram)) return {};
  ++counters_.searches;
  return AnswerSearch(machine_.Config(), address, port, faults_.TakeForSearch(), datagram);
}

Counters Printer::Totals() {
  Counters totals = counters_;
  totals.writeErrors = machine_.Jobs().WriteErrors();  // brings the printing up to date
  const Counters& jobs = machine_.JobCounters();
  totals.jobsAccepted = jobs.jobsAccepted;
  totals.jobsFinished = jobs.jobsFinished;
  totals.jobsAbandoned = jobs.jobsAbandoned;
  totals.overruns = jobs.overruns;
  totals.overrunBytes = jobs.overrunBytes;
  totals.faultsApplied = faults_.Applied();
  return totals;
}

PrinterStatus Printer::Status() {
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

}  // namespace nuvsim
