// A host program that does what it is told, line by line, while printers come and go. Each line is
// answered by one:
//   list            RESULT and the names found         choose INDEX    RESULT
//   state           RESULT and the printer's state     send FILE       RESULT
//   raw COMMAND     the reply on the raw channel       leave           closes the raw channel
//   signals         from then on one every millisecond
#include <signal.h>
#include <sys/time.h>

#include <iostream>
#include <sstream>
#include <string>

#include "nuvconnect/NuvConnect5.h"

namespace {

constexpr int kEntryBytes = 63;
constexpr int kMostPrinters = 16;

std::string List() {
  char names[kMostPrinters][kEntryBytes + 1] = {};
  char* list[kMostPrinters];
  for (int i = 0; i < kMostPrinters; ++i) list[i] = names[i];
  int count = kMostPrinters;
  std::string answer =
      std::to_string(API_GetDeviceList(NUV_KIND_USB, list, &count, kEntryBytes, 0));
  for (int i = 0; i < count && i < kMostPrinters; ++i) answer += std::string(" ") + names[i];
  return answer;
}

std::string State() {
  int state = -1;
  const int result = API_GetPrinterStatus(&state);
  return std::to_string(result) + " " + std::to_string(state);
}

// The reply's line without its end.
std::string Raw(const std::string& command) {
  if (!API_NUVCONNECT_OpenDevice()) return "not opened";
  char reply[kEntryBytes + 1] = {};
  API_NUVCONNECT_ExecutiveCommand((command + "\r\n").c_str(), reply, kEntryBytes);
  const std::string line = reply;
  return line.substr(0, line.find('\r'));
}

void StartSignals() {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  sigaction(SIGALRM, &action, nullptr);
  const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
}

std::string Answer(const std::string& line) {
  std::istringstream words(line);
  std::string what, argument;
  words >> what >> argument;
  if (what == "list") return List();
  if (what == "choose") return std::to_string(API_ChooseDevice(NUV_KIND_USB, std::stoi(argument)));
  if (what == "state") return State();
  if (what == "send") {
    const std::wstring path(argument.begin(), argument.end());
    return std::to_string(API_SendPrintFile(path.c_str(), nullptr));
  }
  if (what == "raw") return Raw(argument);
  if (what == "leave") return API_NUVCONNECT_CloseDevice() ? "left" : "not left";
  if (what == "signals") {
    StartSignals();
    return "started";
  }
  return "no such command";
}

}  // namespace

int main() {
  API_Initial();
  for (std::string line; std::getline(std::cin, line);) std::cout << Answer(line) << std::endl;
  API_Close();
}
