// Printers on the wire, in this process: the entry point for tests and for the executable.
//
// A simulator runs on a thread of its own. Answers to commands, jobs, buffer and faults are those
// of README.md.
#ifndef NUVSIM_SIMULATOR_H_
#define NUVSIM_SIMULATOR_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "nuvsim/config.h"
#include "nuvsim/faults/vocabulary.h"
#include "nuvsim/records.h"

namespace NuvSim {

// Thread-safety: every member function may be called from any thread at any time, but not from
// the log callback. Printers are counted from 0 in the order of the configuration; a number out
// of range throws std::out_of_range. What was observed stays readable after Stop().
class Simulator {
 public:
  // Prepares the printers; nothing listens yet. Throws ConfigError for a configuration that
  // cannot be used and std::filesystem::filesystem_error when the job folder cannot be made.
  explicit Simulator(SimulatorConfig config);
  ~Simulator();
  Simulator(const Simulator&) = delete;
  Simulator& operator=(const Simulator&) = delete;

  // Listens and serves until Stop(). Throws std::runtime_error with a message for the user when
  // an address or port cannot be had; nothing listens then. May be called once.
  void Start();
  // Closes everything; a second call does nothing.
  void Stop();

  // Observation.
  size_t PrinterCount() const;
  const PrinterConfig& Config(size_t printer) const;
  uint16_t TcpPort(size_t printer = 0) const;      // 0 before Start()
  uint16_t UsbipPort() const;                      // 0 unless the printers are served so
  std::string UsbBusId(size_t printer = 0) const;  // by which a USB/IP host imports it
  PrinterStatus Status(size_t printer = 0) const;
  Counters Totals(size_t printer = 0) const;
  // The command lines received, in order, without line ends (the newest 100000).
  std::vector<std::string> Requests(size_t printer = 0) const;
  std::vector<JobRecord> Jobs(size_t printer = 0) const;
  // File and content of a job by its index; 0 stands for the newest. Throws std::out_of_range
  // when there is no such job.
  std::filesystem::path JobFile(size_t printer = 0, int index = 0) const;
  std::string JobBytes(size_t printer = 0, int index = 0) const;
  // What came besides lines, in order of arrival (the newest 10000), and the payload of the newest
  // item of a kind, empty before the first.
  std::vector<ReceivedItem> Received(size_t printer = 0) const;
  std::string ReceivedBytes(const std::string& kind, size_t printer = 0) const;
  // Data lines received while no job was open.
  std::string CommandText(size_t printer = 0) const;
  std::filesystem::path CommandFile(size_t printer = 0) const;

  // Waits until `predicate` holds; it is asked at once and after everything that happens to any
  // printer, on the calling thread, and may call this object. False after `timeout`.
  bool WaitUntil(const std::function<bool()>& predicate, std::chrono::milliseconds timeout) const;

  // Interference.
  void InjectFault(size_t printer, const Fault& fault);
  void ClearFaults(size_t printer);
  void SetError(size_t printer, int number);  // state 3, whatever the job does
  void ClearError(size_t printer);
  void SetIdle(size_t printer);  // abandons the job and clears the error
  void SetResinRefusal(size_t printer, std::optional<int> state);
  void SetTagRegistered(size_t printer, bool isRegistered);     // of the resin in place
  void SetRepositioning(size_t printer, bool isRepositioning);  // to the reference position
  // Unplugged, a printer has no connection, accepts none, answers no search, and is off the USB.
  // Replugging listens on the same port; throws std::runtime_error when that is taken. A host must
  // import the USB printer again.
  void Unplug(size_t printer);
  void Replug(size_t printer);
  // To be called after an injected clock has been put forward.
  void ClockChanged();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace NuvSim

#endif  // NUVSIM_SIMULATOR_H_
