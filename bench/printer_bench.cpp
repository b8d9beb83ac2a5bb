// libnuvprinter: finding on two networks, and a printer opened by its address, asked once and left.

#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "bench/process.h"
#include "nuvprinter/nuvprinter.hpp"

namespace Bench {
namespace {

using asio::ip::tcp;
using asio::ip::udp;

constexpr char kPrinterHost[] = "10.77.1.2";
constexpr uint16_t kSearchPort = 6013;
constexpr int kLimitMs = 1000;
constexpr int kOpenings = 500;
#ifdef _WIN32
constexpr char kNowhere[] = "NUL";
#else
constexpr char kNowhere[] = "/dev/null";
#endif

// What nobody can do without: where is it, a connection, a question, an answer.
void AskBarely(asio::io_context& io) {
  std::array<char, 512> reply;
  udp::socket search(io, udp::v4());
  search.send_to(asio::buffer(std::string_view("F195\r\n")),
                 udp::endpoint(asio::ip::make_address_v4(kPrinterHost), kSearchPort));
  udp::endpoint from;
  const size_t size = search.receive_from(asio::buffer(reply), from);
  const std::string answer(reply.data(), size);
  const int port = std::atoi(answer.c_str() + answer.find("PORT=") + sizeof "PORT=" - 1);
  tcp::socket printer(io);
  printer.connect(
      tcp::endpoint(asio::ip::make_address_v4(kPrinterHost), static_cast<uint16_t>(port)));
  printer.set_option(tcp::no_delay(true));
  printer.write_some(asio::buffer(std::string_view("F102\r\n")));
  if (printer.read_some(asio::buffer(reply)) == 0) std::abort();
}

// Processes from their start to their end, in milliseconds.
double ProcessMs(const std::string& command) {
  constexpr int kRuns = 21;
  const auto run = [&] {
    if (std::system(command.c_str()) != 0) std::abort();
  };
  return Quantile(Sample(kRuns, run), 0.5) / 1e6;
}

void Ask() {
  if (nuv::Printer::OpenAddress(kPrinterHost).GetState().state != nuv::PrinterState::kIdle) {
    std::abort();
  }
}

}  // namespace

void RunBarely() {
  asio::io_context io;
  AskBarely(io);
}

void RunPrinter(const std::string& nuvsim, const std::string& nuvctl, const std::string& self) {
  std::printf("libnuvprinter: finding, and opening by address\n");
  nuv::SearchOptions options;
  options.links = {nuv::Link::kNetwork};
  nuv::Call call;
  call.timeLimit = std::chrono::milliseconds(kLimitMs);
  const std::vector<double> search = Sample(3, [&] { nuv::Find(options, call); });
  Report("search of two networks over its time limit", Quantile(search, 0.5) / 1e6 / kLimitMs,
         "times", 1.1);

  const Child printer({nuvsim, "--address", kPrinterHost});
  asio::io_context io;
  const std::vector<double> bare = Sample(kOpenings, [&] { AskBarely(io); });
  const std::vector<double> opened = Sample(kOpenings, Ask);
  Report("floor: the same with bare sockets, median", Quantile(bare, 0.5) / 1000, "us");
  Report("opening by address, a state, closing, median", Quantile(opened, 0.5) / 1000, "us");
  Report("over the floor", Quantile(opened, 0.5) / Quantile(bare, 0.5), "times", 3);

  std::printf("nuvctl status --address, whole processes\n");
  const std::string nothing = std::string(" > ") + kNowhere;
  const double floor = ProcessMs('"' + self + "\" " + kBareOption + nothing);
  const double nuvctlMs = ProcessMs('"' + nuvctl + "\" status --address " + kPrinterHost + nothing);
  Report("floor: a program with bare sockets, median", floor, "ms");
  Report("nuvctl, median", nuvctlMs, "ms", 50);
  Report("nuvctl over the floor", nuvctlMs - floor, "ms more", 25);
}

}  // namespace Bench
