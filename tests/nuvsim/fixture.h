// A simulated printer on 127.0.0.1 and raw clients for it.
#ifndef NUVSIM_TEST_FIXTURE_H_
#define NUVSIM_TEST_FIXTURE_H_

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

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
std::string JobRequest(uint64_t bytes, int layers = 4);

// A TCP client that sends and reads bytes as they are. Reads end at kPatience at the latest.
class RawClient {
 public:
  explicit RawClient(uint16_t port);

  void Send(const std::string& bytes);
  // The next line without its line end; what there is when the connection ends or time is up.
  std::string ReadLine();
  // Sends a command, returns the next line.
  std::string Ask(const std::string& command);
  // Reads until the connection ends: the bytes, and " (closed)", " (reset)" or " (open)". `sent`
  // goes out when the reading has begun: under Wine a reset that comes before it looks like an end.
  std::string ReadToEnd(const std::string& sent = "");
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
  explicit Bench(const std::function<void(PrinterConfig&)>& change = [](PrinterConfig&) {});

  std::unique_ptr<RawClient> Connect() { return std::make_unique<RawClient>(sim->TcpPort()); }
  void Pass(std::chrono::milliseconds time);
  bool WaitUntil(const std::function<bool()>& predicate) {
    return sim->WaitUntil(predicate, kPatience);
  }

  std::unique_ptr<Simulator> sim;

 private:
  std::shared_ptr<std::atomic<int64_t>> nowMs_;
};

}  // namespace NuvSim

#endif  // NUVSIM_TEST_FIXTURE_H_
