// nuvsim: simulated printers on the network and on USB, from the command line.

#include <CLI/CLI.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "nuvsim/config.h"
#include "nuvsim/control/server.h"
#include "nuvsim/json_object.h"
#include "nuvsim/simulator.h"

namespace {

constexpr int kCannotListen = 1;
constexpr int kUsage = 2;

constexpr const char* kPrinterGroup = "Printer";

constexpr const char* kExamples = R"(Examples:
  nuvsim --address 127.0.0.1 --port 9000 --no-discovery --log
  nuvsim --model "BEGO VARSEO XS" --serial 3DPSNKGB3WTW00001 --layer-ms 100
  nuvsim --fault late,code=102,count=3,ms=2500 --fault silent,code=117,count=-1
  nuvsim --address 127.0.0.1 --no-discovery --usbip 3240 --usb-id 11F1:2620
  nuvsim --config printers.json --control 7000

Exit status: 0 ended by SIGINT, SIGTERM or the control connection; 1 an address or port
cannot be had; 2 wrong options or configuration.)";

struct Options {
  NuvSim::PrinterConfig printer;
  int64_t layerMs = 0;
  std::vector<std::string> faults;
  std::string configFile;
  std::string jobFolder;
  uint16_t discoveryPort = 6013;
  bool noDiscovery = false;
  std::optional<uint16_t> usbipPort;
  std::string usbipAddress = "127.0.0.1";
  std::optional<uint16_t> controlPort;
  bool log = false;
};

void AddPrinterOptions(CLI::App& app, Options& options) {
  NuvSim::PrinterConfig& printer = options.printer;
  for (CLI::Option* each : {
           app.add_option("--model", printer.model, "Model name")->capture_default_str(),
           app.add_option("--serial", printer.serial, "Serial number")->capture_default_str(),
           app.add_option("--name", printer.name, "Printer name")->capture_default_str(),
           app.add_option("--nickname", printer.nickname, "Nickname")->capture_default_str(),
           app.add_option("--mac", printer.mac, "MAC address")->capture_default_str(),
           app.add_option("--firmware", printer.firmware, "Firmware version")
               ->capture_default_str(),
           app.add_option("--address", printer.address,
                          "IPv4 address to listen on and announce; default: every interface"),
           app.add_option("--port", printer.port, "TCP port; 0: any free one")
               ->capture_default_str(),
           app.add_option("--usb-id", printer.usbId, "USB vendor and product, hexadecimal")
               ->capture_default_str(),
           app.add_option("--buffer", printer.bufferBytes, "Receive buffer, bytes")
               ->capture_default_str(),
           app.add_option("--drain-rate", printer.drainRate,
                          "Bytes per second that leave the buffer; 0: none")
               ->capture_default_str(),
           app.add_option("--layer-ms", options.layerMs, "Printing time of a layer, ms")
               ->check(CLI::Range(0, 3600000))
               ->capture_default_str(),
           app.add_option("--fault", options.faults,
                          "Fault to arm: kind,key=value,... (may be repeated)"),
       }) {
    each->group(kPrinterGroup);
  }
}

void AddOptions(CLI::App& app, Options& options) {
  app.footer(kExamples);
  AddPrinterOptions(app, options);
  app.add_option("--config", options.configFile,
                 "JSON file that describes several printers, in place of the printer options");
  app.add_option("--job-dir", options.jobFolder,
                 "Folder for received jobs; default: a temporary one, removed at the end");
  app.add_option("--discovery-port", options.discoveryPort, "UDP port of searches")
      ->check(CLI::Range(1, 65535))
      ->capture_default_str();
  app.add_flag("--no-discovery", options.noDiscovery, "Do not answer searches");
  app.add_option("--usbip", options.usbipPort,
                 "TCP port on which the printers are USB printers over USB/IP; 0: any free one");
  app.add_option("--usbip-address", options.usbipAddress, "IPv4 address for USB/IP")
      ->capture_default_str();
  app.add_option("--control", options.controlPort,
                 "TCP port on 127.0.0.1 for JSON control; 0: any free one");
  app.add_flag("--log", options.log, "Print each request and reply");
}

void RefusePrinterOptions(const CLI::App& app) {
  for (const CLI::Option* each : app.get_options()) {
    if (each->get_group() == kPrinterGroup && each->count() > 0) {
      throw NuvSim::ConfigError("--config and " + each->get_name() + " exclude each other");
    }
  }
}

NuvSim::SimulatorConfig MakeConfig(const CLI::App& app, const Options& options) {
  NuvSim::SimulatorConfig config;
  if (options.configFile.empty()) {
    NuvSim::PrinterConfig printer = options.printer;
    printer.layerTime = std::chrono::milliseconds(options.layerMs);
    for (const std::string& words : options.faults) {
      printer.faults.push_back(NuvSim::ParseFault(words));
    }
    config.printers = {printer};
    config.discovery = true;
  } else {
    RefusePrinterOptions(app);
    config = NuvSim::LoadConfig(options.configFile);
  }
  // The command line goes before the file.
  if (app.count("--discovery-port") > 0) config.discoveryPort = options.discoveryPort;
  if (options.usbipPort) config.usbipPort = options.usbipPort;
  if (app.count("--usbip-address") > 0) config.usbipAddress = options.usbipAddress;
  if (options.noDiscovery) config.discovery = false;
  if (!options.jobFolder.empty()) config.jobFolder = options.jobFolder;
  if (options.log) {
    config.log = [](const NuvSim::LogEntry& entry) {
      std::cout << entry.printer << (entry.isReply ? " < " : " > ") << entry.text << std::endl;
    };
  }
  return config;
}

void Announce(const NuvSim::Simulator& simulator, const NuvSim::ControlServer* control) {
  for (size_t i = 0; i < simulator.PrinterCount(); ++i) {
    const NuvSim::PrinterConfig& printer = simulator.Config(i);
    std::cout << "printer " << i << ": " << printer.model << " " << printer.serial << " on "
              << (printer.address.empty() ? "0.0.0.0" : printer.address) << ":"
              << simulator.TcpPort(i) << "\n";
  }
  if (simulator.UsbipPort() != 0) std::cout << "usbip: port " << simulator.UsbipPort() << "\n";
  if (control != nullptr) std::cout << "control: 127.0.0.1:" << control->Port() << "\n";
  std::cout << "ready" << std::endl;
}

void Serve(NuvSim::Simulator& simulator, std::optional<uint16_t> controlPort) {
  asio::io_context io;
  asio::signal_set signals(io, SIGINT, SIGTERM);
  signals.async_wait([&io](const asio::error_code&, int) { io.stop(); });
  std::unique_ptr<NuvSim::ControlServer> control;
  if (controlPort) {
    control =
        std::make_unique<NuvSim::ControlServer>(io, *controlPort, simulator, [&io] { io.stop(); });
  }
  simulator.Start();
  Announce(simulator, control.get());
  io.run();
  simulator.Stop();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Simulates resin 3D printers on the network and on USB.", "nuvsim");
  app.allow_windows_style_options(false);  // a path may begin with a slash there too
  AddOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsage;
  }
  try {
    NuvSim::Simulator simulator(MakeConfig(app, options));
    Serve(simulator, options.controlPort);
  } catch (const NuvSim::ConfigError& error) {
    std::cerr << "nuvsim: " << error.what() << std::endl;
    return kUsage;
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << "nuvsim: " << error.what() << std::endl;
    return kUsage;
  } catch (const std::exception& error) {
    std::cerr << "nuvsim: " << error.what() << std::endl;
    return kCannotListen;
  }
  return 0;
}
