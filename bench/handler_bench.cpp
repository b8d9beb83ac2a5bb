// Status threads against printing printers in a process of their own: processor time, memory, and
// whether every poll comes in time, for one framework and for two hundred.

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/process.h"
#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "nuvprinter/nuvprinter.hpp"

namespace Bench {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Nuv::Connect::ConnectingFramework;

constexpr char kPrinterHost[] = "10.77.1.2";
constexpr int kPrinters = 200;
constexpr int kFirstPort = 20000;
constexpr unsigned int kIntervalMs = 1000;
constexpr std::chrono::seconds kMeasured(10);

std::atomic<int> g_polls{0};
std::atomic<int64_t> g_longestGapUs{0};
std::atomic<bool> g_measuring{false};

void OnPrintingInfo(int, int, int, std::string, int, std::string, std::string) {
  thread_local SteadyClock::time_point last;
  const SteadyClock::time_point now = SteadyClock::now();
  const auto gap = std::chrono::duration_cast<std::chrono::microseconds>(now - last).count();
  const bool first = last == SteadyClock::time_point();
  last = now;
  if (!g_measuring || first) return;
  ++g_polls;
  int64_t longest = g_longestGapUs;
  while (gap > longest && !g_longestGapUs.compare_exchange_weak(longest, gap)) {
  }
}

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

// `silent`: how many of the printers, from the first on, do not tell their state.
std::string WriteConfiguration(const std::string& folder, int silent = 0) {
  const std::string path = folder + "/printers.json";
  std::ofstream file(path);
  file << R"({"jobDir": ")" << folder << R"(", "printers": [)";
  for (int i = 0; i < kPrinters; ++i) {
    file << (i == 0 ? "" : ",") << R"({"address": ")" << kPrinterHost << R"(", "port": )"
         << kFirstPort + i << R"(, "serial": "H)" << i << R"(", "name": "h)" << i
         << R"(", "layerMs": 3600000)"
         << (i < silent ? R"(, "faults": [{"kind": "silent", "code": 102, "count": -1}])" : "")
         << '}';
  }
  file << "]}";
  return path;
}

// Connects to printer `index` of the search and has it print.
void StartPrint(ConnectingFramework& framework, int index) {
  constexpr int kSearchMs = 200;
  Nuv::Connect::IConnect& channel = *framework.GetConnect();
  channel.SetSearchTimeout(kSearchMs);
  std::vector<std::string> found;
  // Answers may be lost: two hundred come at once.
  for (int attempt = 0; attempt < 20 && found.size() <= static_cast<size_t>(index); ++attempt) {
    Check(channel.EnumerateDevices(NUV_KIND_NETWORK, found), "searching");
  }
  Check(framework.ChooseDevice(NUV_KIND_NETWORK, index) == NUV_OK, "choosing");
  const std::string opened = channel.ExecuteCommand(
      "F103 S1 L100 T0.050000 R45 V1.000000 C1.000000 E1.000000 H1.000000 Y1.000000 U1.000000 "
      "P80.000000\r\n");
  Check(opened.find("OK") != std::string::npos || opened.find("S:1") != std::string::npos,
        "opening a job");
  channel.SendBytes({'x', '\r', '\n'});
}

// What a poll cannot do without: a connection, two questions, two answers.
void BarePoll(asio::io_context& io, int port) {
  using asio::ip::tcp;
  tcp::socket connection(io);
  connection.connect(
      tcp::endpoint(asio::ip::make_address_v4(kPrinterHost), static_cast<uint16_t>(port)));
  connection.set_option(tcp::no_delay(true));
  std::array<char, 512> reply;
  for (const std::string_view request : {"F101\r\n", "F107\r\n"}) {
    asio::write(connection, asio::buffer(request));
    connection.read_some(asio::buffer(reply));
  }
}

// Percent of one core that this process takes while it is measured.
double MeasuredPercent() {
  const double before = ProcessorSeconds();
  std::this_thread::sleep_for(kMeasured);
  return (ProcessorSeconds() - before) / static_cast<double>(kMeasured.count()) * 100;
}

struct Cost {
  double percent;  // of one core
  double mib;
};

double ResidentMib() { return static_cast<double>(ResidentKib()) / 1024; }

// The floor: as many threads that do the least and nothing of the library.
Cost MeasureBare(int count) {
  asio::io_context io;
  std::atomic<bool> ended{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&io, &ended, i] {
      while (!ended) {
        std::this_thread::sleep_for(std::chrono::milliseconds(kIntervalMs));
        BarePoll(io, kFirstPort + i);
      }
    });
    // Spread over the second, as status threads are that were started one by one.
    std::this_thread::sleep_for(std::chrono::milliseconds(kIntervalMs) / count);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(kIntervalMs));
  const Cost cost{MeasuredPercent(), ResidentMib()};
  ended = true;
  for (std::thread& thread : threads) thread.join();
  const std::string who = "floor: " + std::to_string(count) + " threads with bare sockets";
  Report(who, cost.percent, "%");
  Report(who + ", memory", cost.mib, "MiB");
  return cost;
}

// Runs `count` frameworks with status threads.
Cost Measure(int count) {
  std::vector<std::unique_ptr<ConnectingFramework>> frameworks;
  for (int i = 0; i < count; ++i) {
    frameworks.push_back(std::make_unique<ConnectingFramework>());
    StartPrint(*frameworks.back(), i);
    frameworks.back()->RegisterPrintingInfoCallback(OnPrintingInfo, kIntervalMs);
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));
  g_polls = 0;
  g_longestGapUs = 0;
  g_measuring = true;
  const double percent = MeasuredPercent();
  g_measuring = false;
  const std::string who = std::to_string(count) + (count == 1 ? " framework" : " frameworks");
  Report(who + ": processor time of one core", percent, "%", count == 1 ? 0.1 : 2);
  const double mib = ResidentMib();
  Report(who + ": resident memory", mib, "MiB", 150);
  Report(who + ": longest time between two polls of a printer",
         static_cast<double>(g_longestGapUs) / 1000, "ms", kIntervalMs + 100);
  Report(who + ": polls left out",
         std::max(0, (static_cast<int>(kMeasured.count()) - 1) * count - g_polls), "polls", 0.5);
  return {percent, mib};
}

// Looks at all printers, of which so many do not tell their state, through libnuvprinter.
double MeasureWatches(int silent) {
  struct Row {
    nuv::Printer printer;
    nuv::Watch watch;
  };
  struct Told {
    SteadyClock::time_point last;
    std::atomic<int64_t> longestGapUs{0};
    std::atomic<int> looks{0};
  };
  std::vector<Told> told(kPrinters);
  std::vector<Row> rows(kPrinters);
  for (int i = 0; i < kPrinters; ++i) {
    const auto at = static_cast<size_t>(i);
    nuv::Identity where;
    where.address = kPrinterHost;
    where.tcpPort = kFirstPort + i;
    rows[at].printer = nuv::Printer::Open(where);
    rows[at].watch = rows[at].printer.Watch(
        std::chrono::milliseconds(kIntervalMs), [&told, at](const nuv::Event&) {
          Told& row = told[at];
          const SteadyClock::time_point now = SteadyClock::now();
          if (g_measuring && ++row.looks > 1) {
            const auto gap =
                std::chrono::duration_cast<std::chrono::microseconds>(now - row.last).count();
            row.longestGapUs = std::max<int64_t>(row.longestGapUs, gap);
          }
          row.last = now;
          return true;
        });
  }
  std::this_thread::sleep_for(std::chrono::seconds(silent == 0 ? 2 : 10));
  g_measuring = true;
  const double percent = MeasuredPercent();
  g_measuring = false;
  const size_t threads = Threads() - 1;
  int64_t longest = 0;
  int leftOut = 0;
  for (size_t i = static_cast<size_t>(silent); i < told.size(); ++i) {
    longest = std::max<int64_t>(longest, told[i].longestGapUs);
    leftOut += std::max(0, static_cast<int>(kMeasured.count()) - 1 - told[i].looks);
  }
  const std::string who =
      silent == 0 ? "200 watches" : "200 watches, " + std::to_string(silent) + " of them silent";
  Report(who + ": processor time of one core", percent, "%");
  Report(who + ": threads", static_cast<double>(threads), "threads", silent == 0 ? 8 : 0);
  Report(who + ": longest time between two looks at one that answers",
         static_cast<double>(longest) / 1000, "ms", 2 * kIntervalMs);
  Report(who + ": looks left out", leftOut, "looks", silent == 0 ? 0.5 : 0);
  return percent;
}

}  // namespace

void RunHandlers(const std::string& nuvsim, const std::string& folder) {
  std::printf("Status threads, each asking a printing printer every second\n");
  std::filesystem::create_directories(folder);
  {
    const Child printers({nuvsim, "--config", WriteConfiguration(folder)});
    const Cost floor = MeasureBare(kPrinters);
    const Cost one = Measure(1);
    const Cost many = Measure(kPrinters);
    Report("200 frameworks over the floor: processor time", many.percent / floor.percent, "times");
    if (one.percent > 0) {
      Report("200 frameworks over one: processor time", many.percent / one.percent, "times");
    } else {
      std::printf("  200 frameworks over one: left out, that of one is below the system's step\n");
    }
    Report("200 frameworks over one: memory", many.mib - one.mib, "MiB more");
    Report("200 watches over 200 frameworks: processor time", MeasureWatches(0) / many.percent,
           "times", 0.6);
  }
  {
    constexpr int kSilent = 50;
    const Child printers({nuvsim, "--config", WriteConfiguration(folder, kSilent)});
    MeasureWatches(kSilent);
  }
  std::filesystem::remove_all(folder);
}

}  // namespace Bench
