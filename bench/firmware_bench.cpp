// Firmware images against a simulator in a process of its own: pacing and memory.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "api/marshalling.h"
#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/process.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/NuvConnect5.h"

namespace Bench {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Nuv::Connect::ConnectingFramework;

constexpr size_t kMiB = size_t{1} << 20;
constexpr int kPauseMs = 15;  // between two blocks

class SleeplessClock final : public Nuv::Platform::Clock {
 public:
  std::chrono::nanoseconds Now() const override { return SteadyClock::now().time_since_epoch(); }
  void SleepFor(std::chrono::milliseconds) override {}
};

void Check(int result, const char* what) {
  if (result == NUV_OK) return;
  std::fprintf(stderr, "%s ended with %d\n", what, result);
  std::exit(1);
}

void Connect(ConnectingFramework& framework) {
  constexpr int kSearchMs = 500;
  std::vector<std::string> serials;
  Check(framework.GetDeviceList(NUV_KIND_NETWORK, serials, kSearchMs), "listing");
  Check(framework.ChooseDevice(NUV_KIND_NETWORK, 0), "choosing");
}

// What a transfer of `blocks` blocks takes over the pauses of its blocks: the best of several,
// since what disturbs a round is not the code's.
void Pacing(const char* what, int blocks, const std::function<int()>& announce,
            const std::function<int()>& send) {
  constexpr int kRounds = 5;
  double best = 0;
  for (int round = 0; round < kRounds; ++round) {
    Check(announce(), "announcing");
    const SteadyClock::time_point start = SteadyClock::now();
    Check(send(), what);
    const double ms = std::chrono::duration<double, std::milli>(SteadyClock::now() - start).count();
    if (round == 0 || ms < best) best = ms;
  }
  Report(std::string(what) + ": duration over blocks times 15 ms", best / (kPauseMs * blocks),
         "times", 1.02);
}

void PacingOfBothKinds() {
  constexpr int kBlocks = 100;
  constexpr size_t kEngineBlock = 10240;
  constexpr size_t kAndroidBlock = 10232;
  ConnectingFramework framework;
  Connect(framework);
  ReportBarePauses(std::chrono::milliseconds(kPauseMs), kBlocks);
  const std::vector<uint8_t> engine(kBlocks * kEngineBlock);
  Pacing(
      "engine image of 100 blocks", kBlocks,
      [&] {
        return framework.SetFWUpdateFileInfo_Engine(static_cast<uint32_t>(engine.size()), "e.bin");
      },
      [&] { return framework.SendFWData(engine); });
  const std::vector<uint8_t> android(kBlocks * kAndroidBlock);
  Pacing(
      "Android image of 100 blocks", kBlocks,
      [&] {
        return framework.SetFWUpdateFileInfo_Android(1, static_cast<uint32_t>(android.size()),
                                                     "a.img");
      },
      [&] { return framework.SendFWDataAndroid(android); });
  Check(framework.StartFWUpgradeProcess(), "starting");
}

// Through the export, whose copy of the image is a part of the figure.
void Memory() {
  constexpr size_t kImage = 64 * kMiB;
  SleeplessClock clock;
  ConnectingFramework framework(clock);
  Connect(framework);
  const std::vector<uint8_t> image(kImage, 'x');
  Check(framework.SetFWUpdateFileInfo_Engine(static_cast<uint32_t>(kImage), "e.bin"), "announcing");
  g_framework = &framework;
  ResetPeak();
  const long idle = ResidentKib();
  Check(API_SendFWData(image.data(), static_cast<int>(kImage)), "sending");
  const double above = static_cast<double>(PeakKib() - idle) / 1024;
  g_framework = nullptr;
  Report("64 MiB image: peak memory above idle, without the image", above - 64, "MiB", 1);
}

}  // namespace

void RunFirmware(const std::string& nuvsim, const std::string& folder) {
  std::printf("Firmware\n");
  const Child printer(
      {nuvsim, "--address", "10.77.1.2", "--job-dir", folder, "--model", "Fabrix150 xP"});
  Memory();
  PacingOfBothKinds();
}

}  // namespace Bench
