// Attaches simulated printers to USB under Wine: the named pipe that stands for the driver is
// joined to the TCP port of a running nuvsim. "Plugged out" when the standard input ends. Usage:
// usb_bridge PORT VENDOR_AND_PRODUCT SERIAL [VENDOR_AND_PRODUCT SERIAL]...
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "tests/wine/usb_device.h"

namespace {

using asio::ip::tcp;

constexpr std::chrono::milliseconds kPause(1);

std::wstring Wide(const std::string& text) { return {text.begin(), text.end()}; }

// The printer's side; connected while a host has the device open.
class Printer {
 public:
  explicit Printer(unsigned short port) : target_(asio::ip::address_v4::loopback(), port) {}

  void Connect() {
    if (socket_.is_open()) return;
    socket_.connect(target_);
    socket_.set_option(tcp::no_delay(true));
    socket_.non_blocking(true);
  }
  void Disconnect() {
    asio::error_code ignored;
    socket_.close(ignored);
  }
  void Write(const std::string& bytes) {
    socket_.non_blocking(false);
    asio::write(socket_, asio::buffer(bytes));
    socket_.non_blocking(true);
  }
  // What has arrived, without waiting.
  std::string Read() {
    char buffer[4096];
    asio::error_code error;
    const size_t count = socket_.read_some(asio::buffer(buffer), error);
    return {buffer, error ? 0 : count};
  }

 private:
  asio::io_context io_;
  tcp::endpoint target_;
  tcp::socket socket_{io_};
};

void Bridge(Printer& printer, const std::atomic<bool>& pluggedOut) {
  Wine::DevicePipe pipe;
  std::string bytes;
  while (!pluggedOut) {
    if (!pipe.Receive(bytes)) printer.Disconnect();
    if (pipe.Connected()) {
      printer.Connect();
      if (!bytes.empty()) printer.Write(bytes);
      const std::string reply = printer.Read();
      if (!reply.empty()) pipe.Send(reply);
    }
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4 || argc % 2 != 0) {
    std::fprintf(stderr, "usage: usb_bridge PORT VENDOR_AND_PRODUCT SERIAL ...\n");
    return 2;
  }
  try {
    Printer printer(static_cast<unsigned short>(std::atoi(argv[1])));
    std::vector<std::unique_ptr<Wine::RegisteredDevice>> devices;
    for (int i = 2; i < argc; i += 2) {
      const std::wstring id = Wide(argv[i]);
      devices.push_back(
          std::make_unique<Wine::RegisteredDevice>(id, Wide(argv[i + 1]), L"USB\\" + id));
    }
    std::atomic<bool> pluggedOut{false};
    std::thread input([&] {
      while (std::getchar() != EOF) {
      }
      pluggedOut = true;
    });
    std::puts("attached");
    std::fflush(stdout);
    Bridge(printer, pluggedOut);
    input.join();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "usb_bridge: %s\n", error.what());
    return 1;
  }
}
