// The library over the kernel's USB printer driver, beside a bare loop on the same device. Runs in
// the virtual machine of `./dev bench --usb`, with the simulated printers attached there.
// Usage: nuv_usb_bench PRINT_FILE

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "bench/figures.h"
#include "bench/pass_clock.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace {

using Nuv::Connect::ConnectingFramework;

constexpr char kDevice[] = "/dev/usb/lp0";
constexpr char kRequest[] = "F102\r\n";
constexpr char kReply[] = "F102 OK S:0\r\n";
constexpr int kWarmUp = 30;
constexpr int kCalls = 200;
constexpr int kRounds = 10;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::perror(what);
  std::exit(1);
}

size_t OpenHandles() {
  size_t count = 0;
  for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd")) {
    (void)each;
    ++count;
  }
  return count;
}

std::vector<double> BareLoop() {
  const int device = open(kDevice, O_RDWR | O_CLOEXEC);
  Check(device >= 0, "opening the device");
  char buffer[512];
  const auto call = [&] {
    Check(write(device, kRequest, sizeof kRequest - 1) == sizeof kRequest - 1, "write");
    Check(read(device, buffer, sizeof buffer) == sizeof kReply - 1, "read");
  };
  Bench::Sample(kWarmUp, call);
  std::vector<double> samples = Bench::Sample(kCalls, call);
  close(device);
  return samples;
}

std::vector<double> LibraryLoop(ConnectingFramework& framework) {
  Check(framework.ChooseDevice(NUV_KIND_USB, 0) == NUV_OK, "choosing");
  int state = -1;
  const auto call = [&] {
    Check(framework.GetPrinterStatus(&state) == NUV_OK && state == 0, "state query");
  };
  Bench::Sample(kWarmUp, call);
  std::vector<double> samples = Bench::Sample(kCalls, call);
  framework.GetConnect()->CloseDevice();
  return samples;
}

void RoundTrip(ConnectingFramework& framework) {
  double bareMedian = 1e18, bareLate = 1e18, median = 1e18, late = 1e18;
  for (int round = 0; round < kRounds; ++round) {
    // In turns, since what a machine does at first is slower.
    std::vector<double> bare, library;
    if (round % 2 == 0) library = LibraryLoop(framework);
    bare = BareLoop();
    if (round % 2 == 1) library = LibraryLoop(framework);
    bareMedian = std::min(bareMedian, Bench::Quantile(bare, 0.5) / 1000);
    bareLate = std::min(bareLate, Bench::Quantile(bare, 0.99) / 1000);
    median = std::min(median, Bench::Quantile(library, 0.5) / 1000);
    late = std::min(late, Bench::Quantile(library, 0.99) / 1000);
  }
  Bench::Report("floor: bare write and read, median", bareMedian, "us");
  Bench::Report("floor: bare write and read, 99th percentile", bareLate, "us");
  Bench::Report("state query, median", median, "us");
  Bench::Report("state query, 99th percentile", late, "us");
  Bench::Report("median over floor", median / bareMedian, "times", 1.3);
  Bench::Report("99th percentile over floor", late / bareLate, "times", 1.3);
}

void Listing(ConnectingFramework& framework) {
  std::vector<std::string> found;
  const std::vector<double> enumerations = Bench::Sample(
      11, [&] { Check(framework.GetConnect()->EnumerateDevices(NUV_KIND_USB, found), "listing"); });
  Bench::Report("printers attached", static_cast<double>(found.size()), "");
  Bench::Report("finding them, without the questions to each",
                Bench::Quantile(enumerations, 0.5) / 1e6, "ms", 100);
  std::vector<std::string> serials;
  const std::vector<double> listing = Bench::Sample(
      1, [&] { Check(framework.GetDeviceList(NUV_KIND_USB, serials, 0) == NUV_OK, "listing"); });
  Bench::Report("the whole list", listing[0] / 1e6, "ms");
}

constexpr int kLines = 60;

// The floor of a job: as many bare writes of a line, each waited for, with the same pauses.
double BareLines() {
  const int device = open(kDevice, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  Check(device >= 0, "opening the device");
  constexpr char kLine[] = "G1 X10 Y0.125 E3.5\r\n";
  Bench::PassClock clock(true);
  const double pacing = Bench::Pacing(clock, [&] {
    for (int i = 0; i < kLines; ++i) {
      Check(write(device, kLine, sizeof kLine - 1) == sizeof kLine - 1, "writing a line");
      pollfd output{device, POLLOUT, 0};
      Check(poll(&output, 1, 3000) == 1, "waiting for it");
      clock.SleepFor(std::chrono::milliseconds(100));
    }
  });
  close(device);
  Bench::Report("floor: time per bare line", clock.MedianUs(0, clock.Passes()), "us");
  Bench::Report("floor: bare lines, duration over their pauses", pacing, "times");
  return pacing;
}

double Job(const std::string& path) {
  Bench::PassClock clock(true);
  ConnectingFramework framework(clock);
  std::vector<std::string> serials;
  Check(framework.GetDeviceList(NUV_KIND_USB, serials, 0) == NUV_OK, "listing");
  Check(framework.ChooseDevice(NUV_KIND_USB, 0) == NUV_OK, "choosing");
  const double pacing = Bench::Pacing(clock, [&] {
    Check(framework.SendPrintFile({path.begin(), path.end()}, nullptr) == NUV_OK, "job");
  });
  Bench::Report("time per line", clock.MedianUs(0, clock.Passes()), "us");
  Bench::Report("job of 60 lines: duration over its pauses", pacing, "times");
  return pacing;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: nuv_usb_bench PRINT_FILE\n");
    return 2;
  }
  ConnectingFramework framework;
  Listing(framework);
  RoundTrip(framework);
  const size_t before = OpenHandles();
  for (int i = 0; i < 100; ++i) {
    Check(framework.ChooseDevice(NUV_KIND_USB, i % 2) == NUV_OK, "choosing");
    if (i % 3 == 0) framework.GetConnect()->CloseDevice();
  }
  framework.GetConnect()->CloseDevice();
  Bench::Report("handles left open by 100 openings", static_cast<double>(OpenHandles() - before),
                "", 0.5);
  // What a virtual machine adds to a pause and to the first write after it is not the library's.
  const double job = Job(argv[1]);
  Bench::Report("job over bare lines", job / BareLines(), "times", 1.01);
  if (Bench::AnyOverLimit()) std::printf("at least one figure is over its limit\n");
  return Bench::AnyOverLimit() ? 1 : 0;
}
