#include "nuvsim/printer/jobs.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <system_error>
#include <utility>

namespace NuvSim {
namespace {

constexpr auto kFreshBinary = std::ios::binary | std::ios::trunc;

}  // namespace

size_t LineEndLength(std::string_view line) {
  if (line.empty() || line.back() != '\n') return 0;
  return line.size() >= 2 && line[line.size() - 2] == '\r' ? 2 : 1;
}

ReceiveBuffer::ReceiveBuffer(uint64_t capacity, uint64_t drainRate, TimePoint now)
    : capacity_(capacity), drainRate_(static_cast<double>(drainRate)), drainedUntil_(now) {}

void ReceiveBuffer::Drain(TimePoint now) {
  if (now <= drainedUntil_) return;
  const std::chrono::duration<double> elapsed = now - drainedUntil_;
  filled_ = std::max(0.0, filled_ - elapsed.count() * drainRate_);
  drainedUntil_ = now;
}

uint64_t ReceiveBuffer::FreeBytes(TimePoint now) {
  Drain(now);
  // Fractions of a byte come from rounding; a thousandth must not cost a whole one.
  const auto used = static_cast<uint64_t>(std::ceil(filled_ - 0.001));
  return capacity_ - std::min(used, capacity_);
}

bool ReceiveBuffer::Fill(uint64_t bytes, TimePoint now) {
  if (bytes > FreeBytes(now)) return false;
  filled_ += static_cast<double>(bytes);
  return true;
}

JobFolder::JobFolder(const std::filesystem::path& chosen)
    : path_(chosen), isPrivate_(chosen.empty()) {
  if (!isPrivate_) {
    std::filesystem::create_directories(path_);
    return;
  }
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() / ("nuvsim-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
  std::filesystem::permissions(path_, std::filesystem::perms::owner_all);
}

JobFolder::~JobFolder() {
  std::error_code ignored;
  if (isPrivate_) std::filesystem::remove_all(path_, ignored);
}

JobStore::JobStore(std::filesystem::path folder, std::string prefix)
    : folder_(std::move(folder)),
      prefix_(std::move(prefix)),
      commandFile_(folder_ / (prefix_ + "-commands.txt")),
      commands_(commandFile_, kFreshBinary) {}

JobRecord& JobStore::Open(const JobAnnouncement& announced, CalendarTime now) {
  CloseJobFile();
  JobRecord job;
  job.index = static_cast<int>(jobs_.size()) + 1;
  job.name = "Job" + std::to_string(job.index);
  job.announced = announced;
  job.started = now;
  job.file = folder_ / (prefix_ + "-job" + std::to_string(job.index) + ".data");
  jobData_.open(job.file, kFreshBinary);
  jobs_.push_back(std::move(job));
  return jobs_.back();
}

void JobStore::Append(std::ofstream& file, std::string_view line) {
  file.write(line.data(), static_cast<std::streamsize>(line.size()));
  if (file) return;
  ++writeErrors_;
  file.clear();
}

void JobStore::AppendToJob(std::string_view line) { Append(jobData_, line); }

void JobStore::AppendToCommands(std::string_view line) { Append(commands_, line); }

void JobStore::Flush() {
  for (std::ofstream* file : {&jobData_, &commands_}) {
    if (!file->is_open() || file->flush()) continue;
    ++writeErrors_;
    file->clear();
  }
}

void JobStore::CloseJobFile() {
  if (!jobData_.is_open()) return;
  Flush();
  jobData_.close();
}

}  // namespace NuvSim
