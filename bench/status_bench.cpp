// One state query beside a bare ping-pong of the same bytes, and beside another protocol library's
// register read. Server and client share one core, so that the figures are processor time.

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/process.h"
#include "bench/register_read.h"
#include "bench/servers.h"
#include "nuvconnect/NuvConnect5.h"
#include "nuvprinter/nuvprinter.hpp"

namespace Bench {
namespace {

using asio::ip::tcp;

constexpr uint16_t kPrinterPort = 19000;
constexpr uint16_t kPingPongPort = 19001;
constexpr uint16_t kAnotherPort = 19003;
constexpr int kWarmUp = 2000;
constexpr int kCalls = 20000;
constexpr int kRounds = 5;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

// One kind of call, measured in turns with the others.
class Figures {
 public:
  explicit Figures(std::function<void()> call) : call_(std::move(call)) { Sample(kWarmUp, call_); }
  void Round() {
    const std::vector<double> sorted = Sample(kCalls, call_);
    // The best of the rounds: what disturbs a round is not the code's.
    median_ = std::min(median_, Quantile(sorted, 0.5) / 1000);
    p99_ = std::min(p99_, Quantile(sorted, 0.99) / 1000);
  }
  void Print(const std::string& what) const {
    Report(what + ", median", median_, "us");
    Report(what + ", 99th percentile", p99_, "us");
  }
  double Median() const { return median_; }
  double P99() const { return p99_; }

 private:
  const std::function<void()> call_;
  double median_ = std::numeric_limits<double>::max();
  double p99_ = std::numeric_limits<double>::max();
};

void ConnectLibrary() {
  char serial[64];
  char* list[] = {serial};
  int count = 1;
  API_Initial();
  Check(API_GetDeviceList(NUV_KIND_NETWORK, list, &count, 63, 100) == NUV_OK, "listing");
  Check(API_ChooseDevice(NUV_KIND_NETWORK, 0) == NUV_OK, "choosing");
}

void QueryState() {
  int status = -1;
  if (API_GetPrinterStatus(&status) != NUV_OK || status != 0) std::abort();
}

void PingPong(tcp::socket& connection) {
  std::array<char, 256> buffer;
  connection.write_some(asio::buffer(std::string_view(kStateRequest)));
  const size_t size = connection.read_some(asio::buffer(buffer));
  if (size != std::string_view(kStateReply).size()) std::abort();
}

void MeasureInTurns(tcp::socket& connection, const nuv::Printer& printer) {
  Figures floor([&] { PingPong(connection); });
  Figures library(QueryState);
  Figures second([&] {
    if (printer.GetState().state != nuv::PrinterState::kIdle) std::abort();
  });
  const std::function<void()> registerRead = MakeRegisterRead();
  std::optional<Figures> registers;
  if (registerRead) registers.emplace(registerRead);
  for (int round = 0; round < kRounds; ++round) {
    floor.Round();
    library.Round();
    second.Round();
    if (registers) registers->Round();
  }
  floor.Print("floor: bare ping-pong");
  if (registers) {
    registers->Print("libmodbus register read");
  } else {
    std::printf("  libmodbus register read: left out, built without libmodbus\n");
  }
  library.Print("API_GetPrinterStatus");
  Report("median over floor", library.Median() / floor.Median(), "times", 1.5);
  Report("99th percentile over floor", library.P99() / floor.P99(), "times", 3);
  second.Print("libnuvprinter, GetState");
  Report("GetState over API_GetPrinterStatus, median", second.Median() / library.Median(), "times",
         1.1);
}

}  // namespace

void RunStatus() {
  std::printf("State query over loopback TCP, both processes on one core\n");
  PinToOneCore();
  // One server process for each client: a printer serves one at a time.
  const Child printer = StartServer(kCommandsPart, kPrinterPort);
  const Child pingPong = StartServer(kCommandsPart, kPingPongPort);
  const Child search = StartServer(kSearchPart, kPrinterPort);
  const Child another = StartServer(kCommandsPart, kAnotherPort);
  ConnectLibrary();
  asio::io_context io;
  tcp::socket connection(io);
  connection.connect(tcp::endpoint(asio::ip::make_address_v4(kServerHost), kPingPongPort));
  connection.set_option(tcp::no_delay(true));
  {
    nuv::Identity where;
    where.address = kServerHost;
    where.tcpPort = kAnotherPort;
    MeasureInTurns(connection, nuv::Printer::Open(where));
  }
  API_Close();
  Unpin();
}

}  // namespace Bench
