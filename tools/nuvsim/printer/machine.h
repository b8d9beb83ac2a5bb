// The printer behind the wire: its state, its jobs, its settings and its receive buffer. Knows
// nothing of request lines or connections.
//
// Thread-safety: none; the owner serialises calls. Time passes by the clock alone: every operation
// on the job first brings the printing up to date.
#ifndef NUVSIM_PRINTER_MACHINE_H_
#define NUVSIM_PRINTER_MACHINE_H_

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/config.h"
#include "nuvsim/printer/jobs.h"
#include "nuvsim/printer/models.h"
#include "nuvsim/printer/raw_bytes.h"
#include "nuvsim/records.h"

namespace NuvSim {

// How far the printing of a job has come.
struct Progress {
  uint32_t layer = 0;  // current, from 1
  int64_t minutesLeft = 0;
  int percent = 0;  // of the layers
  std::string jobName;
};

// What hosts set on a printer, as it is when the printer comes from the factory.
struct Settings {
  std::string nickname;
  int laserPower = 80;                                 // percent
  int zCompensation = 0;                               // micrometres
  std::array<double, 6> scaling = {1, 1, 1, 1, 1, 1};  // two factors each for X, Y and Z
  int lastUpdatedIndex = 0;                            // of the last job that a host has read
};

// The wireless side: the access points in the printer's reach and the one that it has joined.
class Wireless {
 public:
  // `reach` has no two access points of one name.
  explicit Wireless(std::vector<AccessPoint> reach);
  Wireless(const Wireless&) = delete;
  Wireless& operator=(const Wireless&) = delete;

  // False, with nothing changed, unless the access point is in reach and both are right: the key,
  // and that there is one.
  bool Join(std::string_view name, bool isSecured, std::string_view key);
  void Leave() { joined_ = nullptr; }

  const AccessPoint* Joined() const { return joined_; }               // null when none
  const AccessPoint* Find(std::string_view name) const;               // null when out of reach
  const std::vector<AccessPoint>& InReach() const { return reach_; }  // strongest first

 private:
  std::vector<AccessPoint> reach_;
  const AccessPoint* joined_ = nullptr;
};

class Machine {
 public:
  // The printer is switched on at `switchedOn`. `folder` receives the job files, named by `prefix`;
  // see JobStore.
  Machine(PrinterConfig config, Clock clock, CalendarTime switchedOn, std::filesystem::path folder,
          std::string prefix);

  const PrinterConfig& Config() const { return config_; }
  const Model& GetModel() const { return model_; }
  const ResinConfig& Resin() const { return config_.resin; }
  Settings& GetSettings() { return settings_; }
  Wireless& GetWireless() { return wireless_; }
  // The printer's own address on the wired network (IPv4, host byte order): the one that the host
  // has reached it at.
  uint32_t WiredAddress() const { return wiredAddress_; }
  void SetWiredAddress(uint32_t address) { wiredAddress_ = address; }

  Intake& GetIntake() { return intake_; }
  std::chrono::steady_clock::time_point Now() const { return clock_(); }

  // Job life. OpenJob is refused (false) unless the printer is idle. An empty `name` stands for
  // one that is made from the job's index.
  bool OpenJob(const JobAnnouncement& announced, const std::string& name = "");
  void AbandonJob();
  const JobRecord* LastJob();       // null before the first
  const JobRecord* Job(int index);  // null when there is no such job

  // A data line with its line end: goes through the buffer to the open job, or to the command
  // text when no job is open. A line that does not fit is lost.
  void TakeLine(std::string_view line);
  void LoseLine(uint64_t bytes);
  void FlushFiles() {
    jobs_.Flush();
    intake_.Flush();
  }

  // What the printer reports.
  State CurrentState();
  int ErrorNumber() const { return errorNumber_.value_or(0); }
  bool IsRepositioning() const { return isRepositioning_; }
  std::optional<Progress> Printing();  // set while a job prints
  uint64_t FreeBytes() { return buffer_.FreeBytes(clock_()); }

  // Time until the printing takes its next step; empty when none is due.
  std::optional<std::chrono::nanoseconds> TimeToNextStep();

  // Interference from outside. An error hides the job's state without ending the job.
  void SetError(int number) { errorNumber_ = number; }
  void ClearError() { errorNumber_.reset(); }
  void SetIdle();
  void SetResinRefusal(std::optional<int> state) { config_.resin.refusal = state; }
  void SetTagRegistered(bool isRegistered) { config_.resin.tagRegistered = isRegistered; }
  void SetRepositioning(bool isRepositioning) { isRepositioning_ = isRepositioning; }

  const JobStore& Jobs();
  const Counters& JobCounters();  // jobs and overruns only

 private:
  void Advance();
  uint32_t LayersDone();
  bool JobIs(JobStatus status) const;
  void CompleteIfReceived();
  void EndJob(JobStatus status, std::chrono::steady_clock::time_point when);
  CalendarTime CalendarAt(std::chrono::steady_clock::time_point when) const;

  PrinterConfig config_;
  Model model_;
  Settings settings_;
  Wireless wireless_;
  Clock clock_;
  std::chrono::steady_clock::time_point clockAtStart_;
  CalendarTime switchedOn_;
  ReceiveBuffer buffer_;
  JobStore jobs_;
  Intake intake_;
  Counters counters_;
  uint32_t wiredAddress_ = 0;
  std::optional<int> errorNumber_;
  bool isRepositioning_ = false;
  std::chrono::steady_clock::time_point printingSince_;
};

}  // namespace NuvSim

#endif  // NUVSIM_PRINTER_MACHINE_H_
