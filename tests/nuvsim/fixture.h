// A simulated printer on 127.0.0.1 and raw clients for it.
#ifndef NUVSIM_TEST_FIXTURE_H_
#define NUVSIM_TEST_FIXTURE_H_

#include <gtest/gtest.h>

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "nuvsim/simulator.h"

namespace NuvSim {

// Long enough that only a defect can exceed it.
constexpr std::chrono::milliseconds kPatience{20000};

// Runs what was started on the socket to its end, which is a cancel when patience ends first.
template <typename Socket>
bool RunPatiently(asio::io_context& io, Socket& socket) {
  io.restart();
  io.run_for(kPatience);
  const bool isDone = io.stopped();
  if (!isDone) {
    socket.cancel();
    io.run();
  }
  return isDone;
}

// An opening request for a job of so many bytes and layers, with its line end.
inline std::string JobRequest(uint64_t bytes, int layers = 4) {
  return "F103 S" + std::to_string(bytes) + " L" + std::to_string(layers) +
         " T0.05 R10 V12.5 C4 E30 H5 Y1 U2 P80\r\n";
}

// A TCP client that sends and reads bytes as they are. Reads end at kPatience at the latest.
class RawClient {
 public:
  explicit RawClient(uint16_t port) : socket_(io_) {
    socket_.connect({asio::ip::address_v4::loopback(), port});
  }

  void Send(const std::string& bytes) { asio::write(socket_, asio::buffer(bytes)); }
  // The next line without its line end; what there is when the connection ends or time is up.
  std::string ReadLine() {
    size_t length = 0;
    asio::async_read_until(socket_, asio::dynamic_buffer(received_), "\r\n",
                           [&length](const asio::error_code& error, size_t end) {
                             if (!error) length = end;
                           });
    RunPatiently(io_, socket_);
    const bool isLine = length > 0;
    if (!isLine) length = received_.size();
    std::string line = received_.substr(0, isLine ? length - 2 : length);
    received_.erase(0, length);
    return line;
  }
  // Sends a command, returns the next line.
  std::string Ask(const std::string& command) {
    Send(command + "\r\n");
    return ReadLine();
  }
  // Reads until the connection ends: the bytes, and " (closed)", " (reset)" or " (open)". `sent`
  // goes out when the reading has begun: under Wine a reset that comes before it looks like an end.
  std::string ReadToEnd(const std::string& sent = "") {
    std::string ending = " (open)";
    asio::async_read(socket_, asio::dynamic_buffer(received_),
                     [&ending](const asio::error_code& error, size_t) {
                       if (error == asio::error::eof) ending = " (closed)";
                       if (error == asio::error::connection_reset) ending = " (reset)";
                     });
    Send(sent);
    RunPatiently(io_, socket_);
    return std::exchange(received_, std::string()) + ending;
  }
  void Close() { socket_.close(); }

 private:
  asio::io_context io_;
  asio::ip::tcp::socket socket_;
  std::string received_;
};

// 21 November 2026 at 10:30, in seconds since the epoch.
constexpr int64_t kBenchStart = 1795257000;

// The simulator of one printer with a clock that stands still until it is put forward; it begins at
// kBenchStart.
class Bench {
 public:
  explicit Bench(const std::function<void(PrinterConfig&)>& change = [](PrinterConfig&) {}) {
    SimulatorConfig config;
    config.printers = {LoopbackPrinter()};
    change(config.printers[0]);
    config.clock = [now = nowMs_] {
      return std::chrono::steady_clock::time_point(std::chrono::milliseconds(now->load()));
    };
    config.calendarStart = CalendarTime(std::chrono::seconds(kBenchStart));
    sim = std::make_unique<Simulator>(config);
    sim->Start();
  }
  explicit Bench(const char* model) : Bench([=](PrinterConfig& each) { each.model = model; }) {}

  std::unique_ptr<RawClient> Connect() { return std::make_unique<RawClient>(sim->TcpPort()); }
  void Pass(std::chrono::milliseconds time) {
    nowMs_->fetch_add(time.count());
    sim->ClockChanged();
  }
  bool WaitUntil(const std::function<bool()>& predicate) {
    return sim->WaitUntil(predicate, kPatience);
  }

  std::unique_ptr<Simulator> sim;

 private:
  std::shared_ptr<std::atomic<int64_t>> nowMs_ = std::make_shared<std::atomic<int64_t>>(0);
};

}  // namespace NuvSim

#endif  // NUVSIM_TEST_FIXTURE_H_
