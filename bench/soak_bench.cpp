// The library as a print room uses it all day, against a simulator in a process of its own: it must
// neither grow nor keep descriptors.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/process.h"
#include "nuvconnect/NuvConnect5.h"
#include "nuvfile/print_file_writer.h"
#include "tests/support/environment.h"

namespace Bench {
namespace {

constexpr int kPolls = 100;
constexpr int kReopenings = 20;
constexpr double kMostGrowthMib = 2;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

void List() {
  constexpr int kSearchMs = 200;
  char serial[64];
  char* list[] = {serial};
  int count = 1;
  Check(API_GetDeviceList(NUV_KIND_NETWORK, list, &count, 63, kSearchMs) == NUV_OK, "listing");
  Check(API_ChooseDevice(NUV_KIND_NETWORK, 0) == NUV_OK, "choosing");
}

void Poll() {
  int status = -1, layer = 0, percent = 0, minutes = 0;
  for (int i = 0; i < kPolls; ++i) {
    Check(API_GetPrinterStatus(&status) == NUV_OK && status == NUV_PRINTER_IDLE, "state query");
    Check(API_GetPrintingStatus(&layer, &percent, &minutes) == NUV_NOT_PRINTING, "progress query");
  }
}

int JobIndex() {
  int index = 0, size = 0;
  Check(API_GetCurrJobIndexAndTotalSize(&index, &size) == NUV_OK, "job query");
  return index;
}

// A short job; then the printer is idle again.
void Print(const std::wstring& path) {
  const int before = JobIndex();
  Check(API_SendPrintFile(path.c_str(), nullptr) == NUV_OK, "job");
  Check(JobIndex() == before + 1, "job index");
  for (int status = -1; status != NUV_PRINTER_IDLE;) {
    Check(API_GetPrinterStatus(&status) == NUV_OK, "state query");
  }
}

void Refuse() {
  char text[NUV_TEXT_BYTES];
  Check(API_SetLaserPower(101) == NUV_PRINTER_REFUSED, "refusal");
  Check(API_GetJobInfo4(1 << 30, text, text) == NUV_PRINTER_REFUSED, "refusal");
}

void Round(const std::wstring& path) {
  List();
  Poll();
  Refuse();
  Print(path);
  for (int i = 0; i < kReopenings; ++i) {
    Check(API_NUVCONNECT_CloseDevice() && API_NUVCONNECT_OpenDevice(), "reopening");
    JobIndex();
  }
}

}  // namespace

void RunSoak(const std::string& nuvsim, const std::string& folder, int seconds) {
  using std::chrono::steady_clock;
  std::filesystem::create_directories(folder);
  SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
  const std::string file = folder + "/soak.nuv";
  NuvFile::PrintFileContents contents;
  contents.machineId = "3DPSNKG33WTW00001";
  Check(NuvFile::WritePrintFile(file, contents, NuvFile::LinesOf({"G1 X1", "G1 X2"})).Ok(), "file");
  const Child printer({nuvsim, "--address", "10.77.1.2", "--layer-ms", "1", "--job-dir", folder});
  API_Initial();
  const steady_clock::time_point start = steady_clock::now();
  const auto passed = [&] { return (steady_clock::now() - start) / std::chrono::seconds(1); };
  long warmKib = 0;
  size_t warmHandles = 0;
  int rounds = 0;
  // The first tenth is for caches to fill.
  for (; passed() < seconds; ++rounds) {
    Round(std::wstring(file.begin(), file.end()));
    if (warmKib != 0 || passed() < seconds / 10) continue;
    warmKib = ResidentKib();
    warmHandles = Handles();
  }
  std::printf("Soak of %d s: %d rounds, each a listing, %d queries, %d connections, a job\n",
              seconds, rounds, 2 * kPolls + kReopenings, kReopenings);
  Report("memory", static_cast<double>(ResidentKib()) / 1024, "MiB");
  Report("grown", static_cast<double>(ResidentKib() - warmKib) / 1024, "MiB", kMostGrowthMib);
  Report("handles", static_cast<double>(Handles()), "");
  Report("more handles", static_cast<double>(Handles()) - static_cast<double>(warmHandles), "",
         0.5);
  API_Close();
  std::filesystem::remove_all(folder);
}

}  // namespace Bench
