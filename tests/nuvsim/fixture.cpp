#include "fixture.h"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>

namespace NuvSim {

using asio::ip::tcp;

std::string JobRequest(uint64_t bytes, int layers) {
  return "F103 S" + std::to_string(bytes) + " L" + std::to_string(layers) +
         " T0.05 R10 V12.5 C4 E30 H5 Y1 U2 P80\r\n";
}

RawClient::RawClient(uint16_t port) : socket_(io_) {
  socket_.connect(tcp::endpoint(asio::ip::address_v4::loopback(), port));
}

void RawClient::Send(const std::string& bytes) { asio::write(socket_, asio::buffer(bytes)); }

std::string RawClient::ReadLine() {
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

std::string RawClient::Ask(const std::string& command) {
  Send(command + "\r\n");
  return ReadLine();
}

std::string RawClient::ReadToEnd(const std::string& sent) {
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

Bench::Bench(const std::function<void(PrinterConfig&)>& change)
    : nowMs_(std::make_shared<std::atomic<int64_t>>(0)) {
  PrinterConfig printer = LoopbackPrinter();
  change(printer);
  SimulatorConfig config;
  config.printers = {printer};
  config.clock = [now = nowMs_] {
    return std::chrono::steady_clock::time_point(std::chrono::milliseconds(now->load()));
  };
  config.calendarStart = CalendarTime(std::chrono::seconds(kBenchStart));
  sim = std::make_unique<Simulator>(config);
  sim->Start();
}

void Bench::Pass(std::chrono::milliseconds time) {
  nowMs_->fetch_add(time.count());
  sim->ClockChanged();
}

}  // namespace NuvSim
