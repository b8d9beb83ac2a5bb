#include "nuvsim/machine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nuvsim/line_splitter.h"

namespace nuvsim {

Machine::Machine(PrinterConfig config, Clock clock, std::filesystem::path folder,
                 std::string prefix)
    : config_(std::move(config)),
      clock_(std::move(clock)),
      buffer_(config_.bufferBytes, config_.drainRate, clock_()),
      jobs_(std::move(folder), std::move(prefix)) {}

bool Machine::JobIs(JobStatus status) const {
  const JobRecord* job = jobs_.Last();
  return job != nullptr && job->status == status;
}

bool Machine::OpenJob(std::uint64_t announcedBytes, std::uint32_t layers, double minutes) {
  if (CurrentState() != State::kIdle) return false;
  jobs_.Open(announcedBytes, layers, minutes);
  ++counters_.jobsAccepted;
  CompleteIfReceived();
  return true;
}

void Machine::CompleteIfReceived() {
  JobRecord& job = *jobs_.Last();
  if (job.receivedBytes < job.announcedBytes) return;
  jobs_.CloseJobFile();
  job.status = JobStatus::kPrinting;
  printingSince_ = clock_();
  Advance();
}

void Machine::AbandonJob() {
  Advance();
  if (!JobIs(JobStatus::kReceiving) && !JobIs(JobStatus::kPrinting)) return;
  jobs_.CloseJobFile();
  jobs_.Last()->status = JobStatus::kAbandoned;
  ++counters_.jobsAbandoned;
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

void Machine::LoseLine(std::uint64_t bytes) {
  ++counters_.overruns;
  counters_.overrunBytes += bytes;
}

std::uint32_t Machine::LayersDone() {
  const JobRecord& job = *jobs_.Last();
  if (config_.layerTime.count() == 0) return job.layers;
  const auto done = (clock_() - printingSince_) / config_.layerTime;
  return static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(done, 0, static_cast<std::int64_t>(job.layers)));
}

void Machine::Advance() {
  if (!JobIs(JobStatus::kPrinting) || LayersDone() < jobs_.Last()->layers) return;
  jobs_.Last()->status = JobStatus::kFinished;
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
  const std::uint32_t done = std::min(LayersDone(), job.layers - 1);
  const double left = static_cast<double>(job.layers - done) / static_cast<double>(job.layers);
  Progress progress;
  progress.layer = done + 1;
  progress.minutesLeft = std::llround(std::ceil(job.minutes * left));
  progress.percent = static_cast<int>(std::uint64_t{100} * done / job.layers);
  progress.jobName = job.name;
  return progress;
}

const JobRecord* Machine::LastJob() {
  Advance();
  return jobs_.Last();
}

const JobStore& Machine::Jobs() {
  Advance();
  return jobs_;
}

std::optional<std::chrono::nanoseconds> Machine::TimeToNextStep() {
  Advance();
  if (!JobIs(JobStatus::kPrinting)) return std::nullopt;
  const auto next = printingSince_ + config_.layerTime * (std::int64_t{LayersDone()} + 1);
  return std::max<std::chrono::nanoseconds>(next - clock_(), std::chrono::nanoseconds(0));
}

}  // namespace nuvsim
