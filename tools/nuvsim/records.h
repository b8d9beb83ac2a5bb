// What a printer remembers and what can be observed of it: its jobs, what it received, totals.
// Every type is a value and may be copied freely.
#ifndef NUVSIM_RECORDS_H_
#define NUVSIM_RECORDS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace NuvSim {

// Calendar time of the simulated printers. UTC, so that it does not depend on where they run.
using CalendarTime = std::chrono::system_clock::time_point;

// Numbers as they stand on the wire.
enum class State { kIdle = 0, kPrinting = 1, kReceiving = 2, kError = 3 };

enum class JobStatus { kReceiving, kPrinting, kFinished, kAbandoned };

// What a host announces of a job: what the printer reports again.
struct JobAnnouncement {
  uint64_t bytes = 0;  // model data, without line ends
  uint32_t layers = 0;
  double minutes = 0;  // printing time
  double layerMm = 0;  // layer thickness
  double resinMl = 0;
  double exposureSeconds = 0;
  double bottomExposureSeconds = 0;
  double laserPower = 0;  // percent
};

// One accepted job.
struct JobRecord {
  int index = 0;  // 1 for the printer's first job
  std::string name;
  JobAnnouncement announced;
  uint64_t receivedBytes = 0;  // so far, without line ends
  uint64_t lines = 0;          // data lines kept so far
  CalendarTime started;
  std::optional<CalendarTime> ended;
  JobStatus status = JobStatus::kReceiving;
  std::filesystem::path file;  // the data lines as received
};

// So many frames of equal payload, one after the other.
struct BlockRun {
  uint32_t bytes = 0;
  uint64_t count = 0;
};

// Something that came besides lines, or that a host has announced without sending it.
struct ReceivedItem {
  // "key", "L101", "L102", "L103": of a job's header; "thumbnail"; "engine", "panel", "android":
  // firmware images; "announcement": a print file, of which nothing but its size, name and digest
  // came.
  std::string kind;
  std::string name;  // the host's file name; none for what belongs to a job's header
  int job = 0;       // index of the job that it is the header of, else 0
  uint64_t announcedBytes = 0;
  uint64_t receivedBytes = 0;    // payload so far
  std::vector<BlockRun> blocks;  // frames in order; none for what comes without frames
  bool complete = false;         // all announced bytes came
  bool started = false;          // the printer has taken the image as its firmware
  std::string sha1;  // of the payload once no more is taken; of an announcement the host's
  std::filesystem::path file;  // the payload; the next item of this kind replaces it
};

// Totals since the start; they only grow.
struct Counters {
  uint64_t connections = 0;       // accepted; those to the USB printer too
  uint64_t connectionsEnded = 0;  // by the printer: the end is on its way to the host
  uint64_t bytesReceived = 0;     // on all connections, line ends included
  uint64_t requests = 0;          // command lines
  uint64_t answersSent = 0;       // answers, or pieces of one, that the network has taken
  uint64_t jobsAccepted = 0;
  uint64_t jobsFinished = 0;
  uint64_t jobsAbandoned = 0;
  uint64_t overruns = 0;       // data lines lost because they did not fit
  uint64_t overrunBytes = 0;   // their bytes, line ends included
  uint64_t searches = 0;       // discovery messages seen
  uint64_t faultsApplied = 0;  // times that an armed fault took effect
  uint64_t writeErrors = 0;    // job or command bytes that could not be stored
};

// A printer at one moment.
struct PrinterStatus {
  State state = State::kIdle;
  int errorNumber = 0;     // with kError
  uint32_t layer = 0;      // current layer from 1 while printing, else 0
  uint64_t freeBytes = 0;  // of the receive buffer
  bool connected = false;  // a client is being served over the network
  bool attached = false;   // a host has the printer on its USB
  bool plugged = true;     // listening
  size_t armedFaults = 0;
};

}  // namespace NuvSim

#endif  // NUVSIM_RECORDS_H_
