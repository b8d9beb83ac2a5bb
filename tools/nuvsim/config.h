// What the simulator and its printers are configured as, its JSON form, and the check that it can
// be used. Free of sockets and of the operating system; every type is a value and may be copied
// freely.
#ifndef NUVSIM_CONFIG_H_
#define NUVSIM_CONFIG_H_

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "nuvsim/faults/vocabulary.h"
#include "nuvsim/records.h"

namespace NuvSim {

// Source of time for draining and printing. Called from several threads at once.
using Clock = std::function<std::chrono::steady_clock::time_point()>;

// A reading of the sensors query.
struct Sensor {
  const char* key;  // as on the wire
  int low;
  int high;
  int usual;  // the reading unless the configuration tells another
};

// In the order of the answer.
constexpr std::array<Sensor, 13> kSensorTable = {{
    {"C_T", -40, 200, 28},
    {"C_B", -40, 200, 27},
    {"ZLT", 0, 1, 0},
    {"ZLB", 0, 1, 1},
    {"V_S", 0, 255, 2},
    {"L_S", 0, 100, 80},
    {"W_H", 0, 1, 1},
    {"Y_H", 0, 1, 1},
    {"C_LI", 0, 1, 1},
    {"C_P", 0, 1, 1},
    {"P_S", 0, 1, 1},
    {"Y_F", 0, 1, 0},
    {"T_T", -40, 200, 30},
}};

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
  std::string address;  // IPv4 to listen on and to announce; empty: every running interface
  uint16_t port = 0;    // TCP; 0: any free port
  std::string usbId = "11F1:2601";         // vendor and product, hexadecimal
  uint64_t bufferBytes = 65536;            // receive buffer, at least 1
  uint64_t drainRate = 1000000000;         // bytes per second; 0: never drains
  std::chrono::milliseconds layerTime{0};  // printing time of one layer, 0 or more
  ResinConfig resin;
  bool openMode = true;                // takes resins without a tag
  int ledHours = 1234;                 // that the light source has been on
  std::map<std::string, int> sensors;  // readings by key; the others are as usual
  std::vector<AccessPoint> accessPoints = {{"Lab net", "correct horse", 6, 80},
                                           {"Open net", "", 11, 40}};
  JobCounts earlierJobs;      // before the printer was switched on
  std::vector<Fault> faults;  // armed from the start
};

// A printer that only programs on this machine can reach (127.0.0.1, any free port).
PrinterConfig LoopbackPrinter();

// One line of the wire log. `text` has no line end.
struct LogEntry {
  size_t printer = 0;
  bool isReply = false;
  std::string text;
};

struct SimulatorConfig {
  std::vector<PrinterConfig> printers;
  bool discovery = false;  // answer searches by UDP broadcast
  uint16_t discoveryPort = 6013;
  std::optional<uint16_t> usbipPort;       // serve the printers over USB/IP; 0: any free port
  std::string usbipAddress = "127.0.0.1";  // IPv4 to serve them on
  std::filesystem::path jobFolder;         // empty: a private temporary folder, removed at the end
  Clock clock;                             // empty: std::chrono::steady_clock
  // Calendar time at which the simulator is made; it goes on with `clock`. Empty: the system's.
  std::optional<CalendarTime> calendarStart;
  // Called on the simulator's thread with its lock held: must not call the simulator.
  std::function<void(const LogEntry&)> log;
};

// Reads the JSON text of a configuration file (see README.md). Unlike in SimulatorConfig,
// searches are answered unless the file says otherwise. Throws ConfigError with a message that
// names the place.
SimulatorConfig ParseConfig(const std::string& json);

// Reads and parses a file; throws ConfigError also when it cannot be read.
SimulatorConfig LoadConfig(const std::filesystem::path& file);

// Throws ConfigError unless the simulator can be built from this.
void ValidateConfig(const SimulatorConfig& config);

}  // namespace NuvSim

#endif  // NUVSIM_CONFIG_H_
