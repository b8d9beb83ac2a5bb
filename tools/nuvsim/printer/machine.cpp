#include "nuvsim/printer/machine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace NuvSim {

Wireless::Wireless(std::vector<AccessPoint> reach) : reach_(std::move(reach)) {
  std::stable_sort(reach_.begin(), reach_.end(),
                   [](const AccessPoint& a, const AccessPoint& b) { return a.signal > b.signal; });
}

const AccessPoint* Wireless::Find(std::string_view name) const {
  const auto found = std::find_if(reach_.begin(), reach_.end(),
                                  [name](const AccessPoint& each) { return each.name == name; });
  return found == reach_.end() ? nullptr : &*found;
}

bool Wireless::Join(std::string_view name, bool isSecured, std::string_view key) {
  const AccessPoint* wanted = Find(name);
  if (wanted == nullptr || wanted->IsSecured() != isSecured || wanted->key != key) return false;
  joined_ = wanted;
  return true;
}

Machine::Machine(PrinterConfig config, Clock clock, CalendarTime switchedOn,
                 std::filesystem::path folder, std::string prefix)
    : config_(std::move(config)),
      model_(config_.model),
      wireless_(config_.accessPoints),
      clock_(std::move(clock)),
      clockAtStart_(clock_()),
      switchedOn_(switchedOn),
      buffer_(config_.bufferBytes, config_.drainRate, clockAtStart_),
      jobs_(folder, prefix),
      intake_(std::move(folder), std::move(prefix)) {
  settings_.nickname = config_.nickname;
}

CalendarTime Machine::CalendarAt(std::chrono::steady_clock::time_point when) const {
  return switchedOn_ + std::chrono::duration_cast<CalendarTime::duration>(when - clockAtStart_);
}

bool Machine::JobIs(JobStatus status) const {
  const JobRecord* job = jobs_.Last();
  return job != nullptr && job->status == status;
}

bool Machine::OpenJob(const JobAnnouncement& announced, const std::string& name) {
  if (CurrentState() != State::kIdle) return false;
  JobRecord& job = jobs_.Open(announced, CalendarAt(clock_()));
  if (!name.empty()) job.name = name;
  ++counters_.jobsAccepted;
  CompleteIfReceived();
  return true;
}

void Machine::CompleteIfReceived() {
  JobRecord& job = *jobs_.Last();
  if (job.receivedBytes < job.announced.bytes) return;
  jobs_.CloseJobFile();
  job.status = JobStatus::kPrinting;
  printingSince_ = clock_();
  Advance();
}

void Machine::AbandonJob() {
  Advance();
  if (!JobIs(JobStatus::kReceiving) && !JobIs(JobStatus::kPrinting)) return;
  jobs_.CloseJobFile();
  EndJob(JobStatus::kAbandoned, clock_());
  ++counters_.jobsAbandoned;
}

void Machine::EndJob(JobStatus status, std::chrono::steady_clock::time_point when) {
  jobs_.Last()->status = status;
  jobs_.Last()->ended = CalendarAt(when);
}

void Machine::SetIdle() {
  AbandonJob();
  ClearError();
}

void Machine::TakeLine(std::string_view line) {
  if (!buffer_.Fill(line.size(), clock_())) {
    LoseLine(line.size());
    return;
  }
  if (!JobIs(JobStatus::kReceiving)) {
    jobs_.AppendToCommands(line);
    return;
  }
  jobs_.AppendToJob(line);
  JobRecord& job = *jobs_.Last();
  ++job.lines;
  job.receivedBytes += line.size() - LineEndLength(line);
  CompleteIfReceived();
}

void Machine::LoseLine(uint64_t bytes) {
  ++counters_.overruns;
  counters_.overrunBytes += bytes;
}

uint32_t Machine::LayersDone() {
  const JobRecord& job = *jobs_.Last();
  if (config_.layerTime.count() == 0) return job.announced.layers;
  const auto done = (clock_() - printingSince_) / config_.layerTime;
  return static_cast<uint32_t>(std::clamp<int64_t>(done, 0, int64_t{job.announced.layers}));
}

void Machine::Advance() {
  if (!JobIs(JobStatus::kPrinting)) return;
  const uint32_t layers = jobs_.Last()->announced.layers;
  if (LayersDone() < layers) return;
  // When the last layer was done, not when somebody asks.
  EndJob(JobStatus::kFinished, printingSince_ + config_.layerTime * int64_t{layers});
  ++counters_.jobsFinished;
}

State Machine::CurrentState() {
  Advance();
  if (errorNumber_) return State::kError;
  if (JobIs(JobStatus::kReceiving)) return State::kReceiving;
  return JobIs(JobStatus::kPrinting) ? State::kPrinting : State::kIdle;
}

std::optional<Progress> Machine::Printing() {
  if (CurrentState() != State::kPrinting) return std::nullopt;
  const JobRecord& job = *jobs_.Last();
  const uint32_t layers = job.announced.layers;
  const uint32_t done = std::min(LayersDone(), layers - 1);
  const double left = static_cast<double>(layers - done) / static_cast<double>(layers);
  Progress progress;
  progress.layer = done + 1;
  progress.minutesLeft = std::llround(std::ceil(job.announced.minutes * left));
  progress.percent = static_cast<int>(uint64_t{100} * done / layers);
  progress.jobName = job.name;
  return progress;
}

const JobRecord* Machine::LastJob() {
  Advance();
  return jobs_.Last();
}

const Counters& Machine::JobCounters() {
  Advance();
  return counters_;
}

const JobRecord* Machine::Job(int index) {
  const auto& jobs = Jobs().Jobs();
  if (index < 1 || static_cast<size_t>(index) > jobs.size()) return nullptr;
  return &jobs[static_cast<size_t>(index) - 1];
}

const JobStore& Machine::Jobs() {
  Advance();
  return jobs_;
}

std::optional<std::chrono::nanoseconds> Machine::TimeToNextStep() {
  Advance();
  if (!JobIs(JobStatus::kPrinting)) return std::nullopt;
  const auto next = printingSince_ + config_.layerTime * (int64_t{LayersDone()} + 1);
  return std::max<std::chrono::nanoseconds>(next - clock_(), std::chrono::nanoseconds(0));
}

}  // namespace NuvSim
