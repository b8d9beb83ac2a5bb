// Simulated printers on the private networks, to be met through libnuvprinter.
#ifndef NUV_TESTS_PRINTER_LAB_H_
#define NUV_TESTS_PRINTER_LAB_H_

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "nuvprinter/nuvprinter.hpp"
#include "nuvsim/simulator.h"

class PrinterLab : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("NUV_PRIVATE_NETWORK") == nullptr) {
      GTEST_SKIP() << "searches printers: run it through in_private_network.sh";
    }
  }

  static NuvSim::PrinterConfig Config(const std::string& serial, const std::string& address,
                                      const std::string& model = "Zafel Superfine") {
    NuvSim::PrinterConfig printer;
    printer.serial = serial;
    printer.model = model;
    printer.name = "printer-" + serial;
    printer.address = address;
    return printer;
  }
  void Start(std::vector<NuvSim::PrinterConfig> printers) {
    NuvSim::SimulatorConfig config;
    config.printers = std::move(printers);
    config.discovery = true;
    simulator = std::make_unique<NuvSim::Simulator>(std::move(config));
    simulator->Start();
  }
  void Commits(const std::string& fault) { simulator->InjectFault(0, NuvSim::ParseFault(fault)); }

  // Whether the condition holds before long.
  template <class Condition>
  bool Becomes(Condition condition) {
    return simulator->WaitUntil(condition, std::chrono::seconds(20));
  }

  // Why a call failed; kOk when it did not.
  template <class Function>
  static nuv::Result Reason(Function function) {
    try {
      function();
    } catch (const nuv::Error& error) {
      text = error.what();
      command = error.Command();
      return error.Reason();
    }
    return nuv::Result::kOk;
  }

  inline static std::string text;  // of the last failure
  inline static int command = 0;
  std::unique_ptr<NuvSim::Simulator> simulator;
};

#endif  // NUV_TESTS_PRINTER_LAB_H_
