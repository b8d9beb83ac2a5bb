// Shows the state of the first network printer, and follows its print for a few seconds. C++: the
// printing-info callback takes strings, so this needs the compiler that built the library.
// Usage: watch_print SECONDS
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "nuvconnect/NuvConnect5.h"

namespace {

constexpr int kSerialBytes = 63;
constexpr int kSearchMs = 500;
constexpr unsigned int kIntervalMs = 1000;

// Runs on the library's thread.
void ShowPrint(int totalLayers, int layer, int, std::string, int minutesLeft, std::string,
               std::string) {
  std::cout << "layer " << layer << " of " << totalLayers << ", " << minutesLeft << " min left"
            << std::endl;
}

bool Connect() {
  char serial[kSerialBytes + 1];
  char* list[] = {serial};
  int count = 1;
  return API_GetDeviceList(NUV_KIND_NETWORK, list, &count, kSerialBytes, kSearchMs) == NUV_OK &&
         API_ChooseDevice(NUV_KIND_NETWORK, 0) == NUV_OK;
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 5;
  API_Initial();
  int state = -1;
  const bool connected = Connect() && API_GetPrinterStatus(&state) == NUV_OK;
  if (connected) {
    std::cout << "state " << state << std::endl;
    API_RegisterPrintingInfoCallback(ShowPrint, kIntervalMs);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
  } else {
    std::cerr << "no printer\n";
  }
  API_Close();  // joins the library's thread
  return connected ? 0 : 1;
}
