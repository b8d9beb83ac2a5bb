// Searches by broadcast, as a host on the same machine makes them. They need the private network
// that the test runner sets up, so that nothing is sent to or heard from a real one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"

namespace nuvsim {
namespace {

using asio::ip::udp;
using testing::ElementsAre;

constexpr const char* kPrinterAddress = "10.77.1.2";
constexpr const char* kBroadcast = "10.77.1.255";

// The host's side: one socket on the search port for all addresses, shared with the simulator.
class SearchTest : public testing::Test {
 protected:
  void SetUp() override {
    if (std::getenv("NUV_PRIVATE_NETWORK") == nullptr) {
      GTEST_SKIP() << "needs the private network of the test runner";
    }
    SimulatorConfig config;
    config.discovery = true;
    for (const char* name : {"one", "Lab Mini"}) {
      PrinterConfig printer;
      printer.address = kPrinterAddress;
      printer.name = name;
      printer.serial = "CN" + std::to_string(config.printers.size());
      config.printers.push_back(printer);
    }
    sim_ = std::make_unique<Simulator>(config);
    sim_->Start();
    host_.open(udp::v4());
    host_.set_option(udp::socket::reuse_address(true));
    host_.set_option(udp::socket::broadcast(true));
    host_.bind(udp::endpoint(udp::v4(), 6013));
  }

  // Broadcasts and returns the next `count` datagrams, the broadcast itself left out.
  std::vector<std::string> Search(const std::string& message, std::size_t count) {
    host_.send_to(asio::buffer(message),
                  udp::endpoint(asio::ip::make_address_v4(kBroadcast), 6013));
    std::vector<std::string> answers = Receive(count + 1);
    EXPECT_EQ(answers.empty() ? "" : answers.front(), message);
    if (!answers.empty()) answers.erase(answers.begin());
    return answers;
  }

  std::vector<std::string> Receive(std::size_t count) {
    std::vector<std::string> datagrams;
    std::array<char, 65536> buffer;
    while (datagrams.size() < count) {
      host_.async_receive(asio::buffer(buffer), [&](const asio::error_code& error, std::size_t n) {
        if (!error) datagrams.emplace_back(buffer.data(), n);
      });
      if (!RunPatiently(io_, host_)) break;
    }
    return datagrams;
  }

  std::string Reply(std::size_t printer) const {
    const PrinterConfig& config = sim_->Config(printer);
    return std::string("F195 OK IP=<") + kPrinterAddress +
           "> PORT=" + std::to_string(sim_->TcpPort(printer)) + " N=<" + config.name +
           "> M:" + config.mac + " CN:" + config.serial + "\r\n";
  }

  std::unique_ptr<Simulator> sim_;
  asio::io_context io_;
  udp::socket host_{io_};
};

TEST_F(SearchTest, EachPrinterAnswersOnceInAnyLetterCase) {
  for (const char* message : {"F195\r\n", "f195", "F195\n"}) {
    EXPECT_THAT(Search(message, 2), ElementsAre(Reply(0), Reply(1)));
  }
  EXPECT_EQ(sim_->Totals(1).searches, 3u);
}

TEST_F(SearchTest, OtherMessagesAndUnpluggedPrintersAreNotAnswered) {
  sim_->Unplug(0);
  // An answer to the first message would come before the answer to the second.
  EXPECT_THAT(Search("F1950\r\n", 0), ElementsAre());
  EXPECT_THAT(Search("F195\r\n", 1), ElementsAre(Reply(1)));
  sim_->Replug(0);
  EXPECT_THAT(Search("F195\r\n", 2), ElementsAre(Reply(0), Reply(1)));
}

}  // namespace
}  // namespace nuvsim
