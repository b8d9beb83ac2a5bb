// A USB connector that follows a script.
#ifndef NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_
#define NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "connect/connecting_framework.h"
#include "tests/support/manual_clock.h"
#include "transport/connector_base.h"

namespace Nuv::Connect {

struct UsbPrinter {
  std::string serial;
  std::string model = "Fabrix150 xP";
  bool opens = true;
  std::string begoSerialReply = {};  // to 140
};

// What is attached, and what the open printer has to say.
struct Port {
  bool walks = true;  // the devices can be walked
  std::vector<UsbPrinter> printers;
  int open = -1;
  int last = -1;                       // that was open
  LinkState look = LinkState::kAlive;  // of what is open
  std::function<void()> onOpen = [] {};
  std::vector<std::string> opened;  // the texts that Open was given, and "same", "again"
  int closes = 0;
  uint32_t readMs = 0;             // of each read
  std::deque<std::string> blocks;  // of the next reads; none left: time-out
  std::vector<std::string> written;
  uint32_t writeStatus = 0;
  std::vector<std::pair<uint32_t, uint32_t>> quietWaits;
  std::function<void()> onRead;                     // in the middle of each read
  std::function<void(const std::string&)> onWrite;  // behind each write; may set the reply
};

class ScriptedConnector final : public ConnectorBase {
 public:
  explicit ScriptedConnector(Port& port) : port_(port) {}
  ~ScriptedConnector() override { port_.open = -1; }
  bool SearchDevices() override {
    count_ = port_.printers.size();
    return port_.walks;
  }
  bool Open(const wchar_t* indexText) override {
    const std::wstring text = indexText;
    port_.opened.emplace_back(text.begin(), text.end());
    const size_t index = std::stoul(text);
    if (index >= count_ || !port_.printers[index].opens) return false;
    port_.open = port_.last = static_cast<int>(index);
    port_.look = LinkState::kAlive;
    port_.onOpen();
    return true;
  }
  void Close() override {
    ++port_.closes;
    port_.open = -1;
  }
  bool Reopen(bool samePlugging) override {
    port_.opened.emplace_back(samePlugging ? "same" : "again");
    port_.open = port_.last;
    port_.look = LinkState::kAlive;
    return port_.open >= 0;
  }
  LinkState Look() override { return port_.open < 0 ? LinkState::kClosed : port_.look; }
  bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) override {
    port_.quietWaits.emplace_back(quietMs, limitMs);
    const bool any = !port_.blocks.empty();
    port_.blocks.clear();
    return any;
  }
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override {
    EXPECT_EQ(timeoutMs, 3000U);
    if (port_.open < 0) return kNotOpen;
    port_.written.emplace_back(data, data + length);
    const UsbPrinter& printer = port_.printers[static_cast<size_t>(port_.open)];
    if (port_.written.back() == "F140\r\n") port_.blocks = {printer.begoSerialReply};
    if (port_.written.back() == "F101\r\n") {
      port_.blocks = {"F101 OK V:1 N:Name M:<" + printer.model + "> S:" + printer.serial + " ",
                      "C:7\r\n"};
    }
    if (port_.onWrite) port_.onWrite(port_.written.back());
    return port_.writeStatus;
  }
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override {
    EXPECT_LE(timeoutMs, 3000U);
    if (port_.onRead) port_.onRead();
    const uint32_t tookMs = std::min(port_.readMs, timeoutMs);
    waiter_->GetClock().SleepFor(std::chrono::milliseconds(tookMs));
    if (waiter_->Over() || port_.blocks.empty() || tookMs < port_.readMs) return kTransferTimeout;
    const std::string block = port_.blocks.front();
    port_.blocks.pop_front();
    EXPECT_LE(block.size(), kReadBytes);
    std::copy(block.begin(), block.end(), buffer);
    return 0;
  }
  std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) override {
    paths.clear();
    for (size_t i = 0; i < count_; ++i)
      paths.push_back(L"/dev/usb/lp" + std::to_wstring(i) + L"\\1");
    return paths;
  }
  std::string Identity(size_t index) const override {
    return index < count_ ? "printer " + std::to_string(index) : "";
  }

 private:
  Port& port_;
  size_t count_ = 0;
};

// A host with the port, in no time.
class UsbHost : public ::testing::Test {
 protected:
  Port port;
  ManualClock clock;
  ConnectingFramework framework{clock, 0, std::make_unique<ScriptedConnector>(port)};
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_
