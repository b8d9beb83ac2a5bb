// A print job against a simulator in a process of its own: pacing, time per line, memory.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/pass_clock.h"
#include "bench/process.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "nuvfile/print_file_writer.h"
#include "tests/support/environment.h"

namespace Bench {
namespace {

using Nuv::Connect::ConnectingFramework;

// Writes a print file of `count` lines of `length` bytes.
std::string MakePrintFile(const std::string& folder, int64_t count, size_t length) {
  const std::string path = folder + "/bench.nuv";
  NuvFile::PrintFileContents contents;
  contents.machineId = "3DPSNKG33WTW00001";
  const std::string line(length, 'x');
  int64_t written = 0;
  const NuvFile::Status status =
      NuvFile::WritePrintFile(path, contents, [&](std::string_view* text, NuvFile::Status*) {
        *text = line;
        return written++ < count;
      });
  if (!status.Ok()) {
    std::fprintf(stderr, "%s\n", status.Message().c_str());
    std::exit(1);
  }
  return path;
}

// The simulator may still be storing the job before, and answers no search meanwhile.
void Connect(ConnectingFramework& framework) {
  constexpr int kAttempts = 60;
  constexpr int kSearchMs = 500;
  std::vector<std::string> serials;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (framework.GetDeviceList(NUV_KIND_NETWORK, serials, kSearchMs) == NUV_OK &&
        framework.ChooseDevice(NUV_KIND_NETWORK, 0) == NUV_OK) {
      return;
    }
  }
  std::fprintf(stderr, "no simulator found\n");
  std::exit(1);
}

void Send(ConnectingFramework& framework, const std::string& path) {
  const std::wstring wide(path.begin(), path.end());
  const int result = framework.SendPrintFile(wide, nullptr);
  if (result == NUV_OK) return;
  std::fprintf(stderr, "job ended with %d\n", result);
  std::exit(1);
}

// The job's duration over its passes' pauses.
void Pacing(const std::string& folder) {
  PassClock clock(true);
  ConnectingFramework framework(clock);
  Connect(framework);
  const std::string path = MakePrintFile(folder, 60, 1000);
  ReportBarePauses(std::chrono::milliseconds(100), 20);
  Report("job of 60 lines: duration over its pauses",
         Bench::Pacing(clock, [&] { Send(framework, path); }), "times", 1.01);
}

void TimePerLine(const std::string& folder) {
  constexpr size_t kLines = 1000100;
  constexpr size_t kWindow = 100;
  PassClock clock(false);
  clock.Reserve(kLines * 2);
  ConnectingFramework framework(clock);
  Connect(framework);
  Send(framework, MakePrintFile(folder, kLines, 40));
  const double early = clock.MedianUs(10, kWindow);
  const double late = clock.MedianUs(clock.Passes() - kWindow, kWindow);
  Report("library's time per line, around line 10", early, "us", 100);
  Report("library's time per line, around line 1,000,000", late, "us", 100);
  Report("line 1,000,000 over line 10", late / early, "times");
}

void Memory(const std::string& folder) {
  constexpr int64_t kLines = 10240;
  constexpr size_t kLength = 104856;  // 1 GiB in all
  const std::string path = MakePrintFile(folder, kLines, kLength);
  PassClock clock(false);
  clock.Reserve(static_cast<size_t>(kLines) * 3);
  ConnectingFramework framework(clock);
  Connect(framework);
  ResetPeak();
  const long idle = ResidentKib();
  Send(framework, path);
  Report("1 GiB print file: peak memory above idle", static_cast<double>(PeakKib() - idle) / 1024,
         "MiB", 16);
}

}  // namespace

void RunJob(const std::string& nuvsim, const std::string& folder) {
  std::printf("Print job\n");
  std::filesystem::create_directories(folder);
  SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
  {
    const Child printer({nuvsim, "--address", "10.77.1.2", "--buffer", "2147483647", "--job-dir",
                         folder, "--model", "Bench"});
    // Memory first: what the others leave to the allocator would hide its growth.
    Memory(folder);
    Pacing(folder);
    TimePerLine(folder);
  }
  std::filesystem::remove_all(folder);
}

}  // namespace Bench
