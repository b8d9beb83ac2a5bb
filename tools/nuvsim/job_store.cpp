#include "nuvsim/job_store.h"

#include <random>
#include <system_error>
#include <utility>

namespace nuvsim {
namespace {

constexpr auto kFreshBinary = std::ios::binary | std::ios::trunc;

}  // namespace

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

}  // namespace nuvsim
