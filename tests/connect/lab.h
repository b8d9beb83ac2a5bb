// A lab of simulated printers on the two private networks of in_private_network.sh, and a framework
// that looks for them.
#ifndef NUV_TESTS_CONNECT_LAB_H_
#define NUV_TESTS_CONNECT_LAB_H_

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"
#include "nuvsim/simulator.h"
#include "tests/support/manual_clock.h"
#include "tests/support/qt_warnings.h"

namespace Nuv::Connect {

using Strings = std::vector<std::string>;

constexpr char kFirstNetwork[] = "10.77.1.2";
constexpr char kSecondNetwork[] = "10.77.2.2";
constexpr int kSearchMs = 150;        // the simulator answers within a few
constexpr int kHurriedSearchMs = 25;  // and mostly within these
constexpr int kReplyTimeoutMs = 600;  // one slice of waiting

class Lab : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("NUV_PRIVATE_NETWORK") == nullptr) {
      GTEST_SKIP() << "searches printers: run it through in_private_network.sh";
    }
    ExpectNoQtWarnings();
    Errors().clear();
    framework.RegisterErrorCodeCallback(
        [](int result, int code) { Errors().emplace_back(result, code); });
  }

  static NuvSim::PrinterConfig Printer(const std::string& serial,
                                       const std::string& model = "Zafel Superfine",
                                       const std::string& address = kFirstNetwork) {
    NuvSim::PrinterConfig printer;
    printer.serial = serial;
    printer.model = model;
    printer.name = "printer-" + serial;
    printer.nickname = "Nick of " + serial;
    printer.address = address;
    return printer;
  }

  void Start(std::vector<NuvSim::PrinterConfig> printers, NuvSim::SimulatorConfig config = {}) {
    config.printers = std::move(printers);
    config.discovery = true;
    simulator = std::make_unique<NuvSim::Simulator>(std::move(config));
    serials.clear();
    simulator->Start();
  }

  // Lists again and again, until all printers have answered a search that is over soon.
  void ListAll(ConnectingFramework& host) {
    for (int i = 0; i < 100 && serials.size() < simulator->PrinterCount(); ++i) {
      serials.clear();
      host.GetDeviceList(NUV_KIND_NETWORK, serials, kHurriedSearchMs);
    }
    ASSERT_EQ(serials.size(), simulator->PrinterCount());
  }
  // Starts one printer and connects to it.
  void StartConnected(NuvSim::PrinterConfig printer) {
    Start({std::move(printer)});
    ListAll(framework);
    ASSERT_EQ(framework.ChooseDevice(NUV_KIND_NETWORK, 0), NUV_OK);
  }

  int List(int kind = NUV_KIND_NETWORK) {
    serials.clear();
    return framework.GetDeviceList(kind, serials, kSearchMs);
  }

  // Whether searches without listing come to find so many.
  bool Finds(size_t count) {
    framework.GetConnect()->SetSearchTimeout(kHurriedSearchMs);
    Strings found;
    for (int i = 0; i < 100 && found.size() != count; ++i) {
      if (!framework.GetConnect()->EnumerateDevices(NUV_KIND_NETWORK, found)) return false;
    }
    return found.size() == count;
  }

  std::string Info(int index, int field) {
    std::string value;
    framework.GetDeviceInfo(value, NUV_KIND_NETWORK, index, field);
    return value;
  }

  std::string NameOfCurrent() {
    std::string version, name, model, serial, controller;
    framework.GetPrinterInfo(version, name, model, serial, controller);
    return name;
  }

  // Whether the condition holds before long.
  bool Becomes(const std::function<bool()>& condition) {
    return simulator->WaitUntil(condition, std::chrono::seconds(10));
  }

  void Commits(const std::string& fault) { simulator->InjectFault(0, NuvSim::ParseFault(fault)); }

  // Starts a printer that tells every search, before itself, of another at this address.
  void StartTellingOf(const std::string& address, uint16_t port) {
    Start({Printer("A1")});
    Commits("malformed,count=-1,text=F195 OK IP=<" + address + "> PORT=" + std::to_string(port) +
            " N=<other> M:0 CN:0");
  }

  static std::vector<std::pair<int, int>>& Errors() {
    static std::vector<std::pair<int, int>> list;
    return list;
  }

  ManualClock clock;
  ConnectingFramework framework{clock, kReplyTimeoutMs};
  std::unique_ptr<NuvSim::Simulator> simulator;
  Strings serials;
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_CONNECT_LAB_H_
