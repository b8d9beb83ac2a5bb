// The jobs that a printer has accepted: the receive buffer that their lines come through, and the
// files that hold what was received.
//
// Data goes straight to the files, so a job may be larger than memory.
// Thread-safety: none; the owner serialises calls.
#ifndef NUVSIM_PRINTER_JOBS_H_
#define NUVSIM_PRINTER_JOBS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/records.h"

namespace NuvSim {

// Bytes of the line end: 2 for CR LF, 1 for a bare LF, 0 for none.
size_t LineEndLength(std::string_view line);

// The receive buffer, as far as a host can see it: job lines fill it, time drains it.
class ReceiveBuffer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // `capacity` in bytes; `drainRate` in bytes per second, 0 for a buffer that never drains.
  ReceiveBuffer(uint64_t capacity, uint64_t drainRate, TimePoint now);

  // Whole free bytes at `now`. Times may not run backwards from call to call.
  uint64_t FreeBytes(TimePoint now);

  // Takes `bytes` if they fit at `now`; false leaves the buffer as it is.
  bool Fill(uint64_t bytes, TimePoint now);

 private:
  void Drain(TimePoint now);

  uint64_t capacity_;
  double drainRate_;
  double filled_ = 0;
  TimePoint drainedUntil_;
};

// The folder for job files: the user's, or a private one that goes with this object.
class JobFolder {
 public:
  explicit JobFolder(const std::filesystem::path& chosen);
  ~JobFolder();
  JobFolder(const JobFolder&) = delete;
  JobFolder& operator=(const JobFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
  bool isPrivate_;
};

class JobStore {
 public:
  // Files are <folder>/<prefix>-job<index>.data and <folder>/<prefix>-commands.txt; files left
  // there by an earlier run are replaced. The folder must exist.
  JobStore(std::filesystem::path folder, std::string prefix);

  // Opens the next job and its file.
  JobRecord& Open(const JobAnnouncement& announced, CalendarTime now);

  // The newest job; null before the first.
  JobRecord* Last() { return jobs_.empty() ? nullptr : &jobs_.back(); }
  const JobRecord* Last() const { return jobs_.empty() ? nullptr : &jobs_.back(); }
  const std::vector<JobRecord>& Jobs() const { return jobs_; }

  // Appends a line to the newest job's file, or to the command file.
  void AppendToJob(std::string_view line);
  void AppendToCommands(std::string_view line);

  // Makes what was appended visible to readers of the files.
  void Flush();

  // The newest job receives no more.
  void CloseJobFile();

  const std::filesystem::path& CommandFile() const { return commandFile_; }
  uint64_t WriteErrors() const { return writeErrors_; }

 private:
  void Append(std::ofstream& file, std::string_view line);

  std::filesystem::path folder_;
  std::string prefix_;
  std::filesystem::path commandFile_;
  std::vector<JobRecord> jobs_;
  std::ofstream jobData_;
  std::ofstream commands_;
  uint64_t writeErrors_ = 0;
};

}  // namespace NuvSim

#endif  // NUVSIM_PRINTER_JOBS_H_
