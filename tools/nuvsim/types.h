// Plain data of the printer simulator: what a printer is configured as and what can be observed.
// Free of sockets and of the operating system; every type is a value and may be copied freely.
#ifndef NUVSIM_TYPES_H_
#define NUVSIM_TYPES_H_

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "nuvsim/calendar.h"
#include "nuvsim/fault.h"

namespace nuvsim {

// Source of time for draining and printing. Called from several threads at once.
using Clock = std::function<std::chrono::steady_clock::time_point()>;

// A configuration that cannot be used; what() names the value and what is wrong with it.
class ConfigError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// What the printer tells about its resin; `state` is the printer's own number.
struct ResinConfig {
  int state = 1;
  int remainingMl = 350;
  std::string code = "1001";
  int tankMl = 500;
  std::string lot = "L0001";
  std::string useBy = "20270131";  // year, month, day
  std::string type = "1001";
  std::string name = "Resin A";
  bool tagRegistered = true;
  std::optional<int> refusal;  // set: resin queries are refused with this state
};

// An access point in the printer's reach. Name and key may hold anything but a line end.
struct AccessPoint {
  std::string name;
  std::string key;  // empty: open to everybody
  int channel = 1;
  int signal = 50;  // percent

  bool IsSecured() const { return !key.empty(); }
};

// Jobs that have come to an end.
struct JobCounts {
  int finished = 0;
  int cancelled = 0;
  int failed = 0;
};

// One printer. Texts go into replies as they are: no CR or LF, and a blank only in `model`, `name`,
// `nickname`, the resin's name and the access points.
struct PrinterConfig {
  std::string model = "Zafel Superfine";
  std::string serial = "SIM0000000001";
  std::string name = "nuvsim";
  std::string nickname = "Simulated printer";
  std::string mac = "02:00:00:00:00:01";
  std::string firmware = "1.0.0";
  std::string controllerVersion = "1.0";
  std::string androidVersion = "2.1.0";
  std::string loaderVersion = "1.4";
  std::string panelVersion = "3.0.2";
  std::string manufactured = "20240131";  // year, month, day
  std::string wirelessMac = "02:00:00:00:01:01";
  std::string address;     // IPv4 to listen on and to announce; empty: every running interface
  std::uint16_t port = 0;  // TCP; 0: any free port
  std::string usbId = "11F1:2601";         // vendor and product, hexadecimal
  std::uint64_t bufferBytes = 65536;       // receive buffer, at least 1
  std::uint64_t drainRate = 1000000000;    // bytes per second; 0: never drains
  std::chrono::milliseconds layerTime{0};  // printing time of one layer, 0 or more
  ResinConfig resin;
  bool openMode = true;                // takes resins without a tag
  int ledHours = 1234;                 // that the light source has been on
  std::map<std::string, int> sensors;  // readings by key; the others are those of sensors.h
  std::vector<AccessPoint> accessPoints = {{"Lab net", "correct horse", 6, 80},
                                           {"Open net", "", 11, 40}};
  JobCounts earlierJobs;      // before the printer was switched on
  std::vector<Fault> faults;  // armed from the start
};

// A printer that only programs on this machine can reach (127.0.0.1, any free port).
PrinterConfig LoopbackPrinter();

// One line of the wire log. `text` has no line end.
struct LogEntry {
  std::size_t printer = 0;
  bool isReply = false;
  std::string text;
};

struct SimulatorConfig {
  std::vector<PrinterConfig> printers;
  bool discovery = false;  // answer searches by UDP broadcast
  std::uint16_t discoveryPort = 6013;
  std::optional<std::uint16_t> usbipPort;  // serve the printers over USB/IP; 0: any free port
  std::string usbipAddress = "127.0.0.1";  // IPv4 to serve them on
  std::filesystem::path jobFolder;         // empty: a private temporary folder, removed at the end
  Clock clock;                             // empty: std::chrono::steady_clock
  // Calendar time at which the simulator is made; it goes on with `clock`. Empty: the system's.
  std::optional<CalendarTime> calendarStart;
  // Called on the simulator's thread with its lock held: must not call the simulator.
  std::function<void(const LogEntry&)> log;
};

// Numbers as they stand on the wire.
enum class State { kIdle = 0, kPrinting = 1, kReceiving = 2, kError = 3 };

enum class JobStatus { kReceiving, kPrinting, kFinished, kAbandoned };

// What a host announces of a job: what the printer reports again.
struct JobAnnouncement {
  std::uint64_t bytes = 0;  // model data, without line ends
  std::uint32_t layers = 0;
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
  std::uint64_t receivedBytes = 0;  // so far, without line ends
  std::uint64_t lines = 0;          // data lines kept so far
  CalendarTime started;
  std::optional<CalendarTime> ended;
  JobStatus status = JobStatus::kReceiving;
  std::filesystem::path file;  // the data lines as received
};

// So many frames of equal payload, one after the other.
struct BlockRun {
  std::uint32_t bytes = 0;
  std::uint64_t count = 0;
};

// Something that came besides lines, or that a host has announced without sending it.
struct ReceivedItem {
  // "key", "L101", "L102", "L103": of a job's header; "thumbnail"; "engine", "panel", "android":
  // firmware images; "announcement": a print file, of which nothing but its size, name and digest
  // came.
  std::string kind;
  std::string name;  // the host's file name; none for what belongs to a job's header
  int job = 0;       // index of the job that it is the header of, else 0
  std::uint64_t announcedBytes = 0;
  std::uint64_t receivedBytes = 0;  // payload so far
  std::vector<BlockRun> blocks;     // frames in order; none for what comes without frames
  bool complete = false;            // all announced bytes came
  bool started = false;             // the printer has taken the image as its firmware
  std::string sha1;  // of the payload once no more is taken; of an announcement the host's
  std::filesystem::path file;  // the payload; the next item of this kind replaces it
};

// Totals since the start; they only grow.
struct Counters {
  std::uint64_t connections = 0;    // accepted; those to the USB printer too
  std::uint64_t bytesReceived = 0;  // on all connections, line ends included
  std::uint64_t requests = 0;       // command lines
  std::uint64_t answersSent = 0;    // answers, or pieces of one, that the network has taken
  std::uint64_t jobsAccepted = 0;
  std::uint64_t jobsFinished = 0;
  std::uint64_t jobsAbandoned = 0;
  std::uint64_t overruns = 0;       // data lines lost because they did not fit
  std::uint64_t overrunBytes = 0;   // their bytes, line ends included
  std::uint64_t searches = 0;       // discovery messages seen
  std::uint64_t faultsApplied = 0;  // times that an armed fault took effect
  std::uint64_t writeErrors = 0;    // job or command bytes that could not be stored
};

// A printer at one moment.
struct PrinterStatus {
  State state = State::kIdle;
  int errorNumber = 0;          // with kError
  std::uint32_t layer = 0;      // current layer from 1 while printing, else 0
  std::uint64_t freeBytes = 0;  // of the receive buffer
  bool connected = false;       // a client is being served over the network
  bool attached = false;        // a host has the printer on its USB
  bool plugged = true;          // listening
  std::size_t armedFaults = 0;
};

}  // namespace nuvsim

#endif  // NUVSIM_TYPES_H_
