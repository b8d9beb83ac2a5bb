// A USB connector that follows a script.
#ifndef NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_
#define NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "transport/connector_base.h"

namespace Nuv::Connect {

struct UsbPrinter {
  std::string serial;
  std::string model = "Fabrix150 xP";
  bool opens = true;
  int plugging = 1;  // how often it has been plugged in
};

// What is attached, and what the open printer has to say.
struct Port {
  bool walks = true;  // the devices can be walked
  std::vector<UsbPrinter> printers;
  int open = -1;
  std::vector<std::string> opened;  // the texts that Open was given
  std::deque<std::string> blocks;   // of the next reads; none left: time-out
  std::vector<std::string> written;
  uint32_t writeStatus = 0;
  bool lost = false;           // the open printer has been unplugged
  std::vector<bool> reopened;  // what Reopen was told when it had to open
  std::vector<std::pair<uint32_t, uint32_t>> quietWaits;
  std::function<void()> onRead;                     // in the middle of each read
  std::function<void(const std::string&)> onWrite;  // behind each write, which may set its reply
  std::atomic<bool> reading{false};
  std::atomic<bool> overlapped{false};  // something was written meanwhile
};

class ScriptedConnector final : public ConnectorBase {
 public:
  explicit ScriptedConnector(Port& port) : port_(port) {}
  bool SearchDevices() override {
    count_ = port_.printers.size();
    return port_.walks;
  }
  bool Open(const wchar_t* indexText) override {
    const std::wstring text = indexText;
    port_.opened.emplace_back(text.begin(), text.end());
    const size_t index = std::stoul(text);
    if (index >= count_ || !port_.printers[index].opens) return false;
    last_ = Identity(index);
    port_.open = static_cast<int>(index);
    port_.lost = false;
    return true;
  }
  bool Reopen(bool samePlugging) override {
    if (port_.open >= 0 && !port_.lost) return true;
    port_.reopened.push_back(samePlugging);
    for (size_t i = 0; i < port_.printers.size(); ++i) {
      if (Identity(i) != last_ || !port_.printers[i].opens) continue;
      port_.open = static_cast<int>(i);
      port_.lost = false;
      return true;
    }
    return false;
  }
  LinkState Look() override {
    if (port_.open < 0) return LinkState::kClosed;
    return port_.lost ? LinkState::kEnded : LinkState::kAlive;
  }
  void Close() override { port_.open = -1; }
  bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) override {
    port_.quietWaits.emplace_back(quietMs, limitMs);
    const bool any = !port_.blocks.empty();
    port_.blocks.clear();
    return any;
  }
  std::string Identity(size_t index) const override {
    if (index >= port_.printers.size()) return {};
    const UsbPrinter& printer = port_.printers[index];
    return printer.serial + " plugged in " + std::to_string(printer.plugging);
  }
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override {
    EXPECT_EQ(timeoutMs, 3000U);
    if (port_.open < 0) return kNotOpen;
    port_.overlapped = port_.overlapped || port_.reading;
    port_.written.emplace_back(data, data + length);
    if (port_.written.back() == "F101\r\n") {
      const UsbPrinter& printer = port_.printers[static_cast<size_t>(port_.open)];
      port_.blocks = {"F101 OK V:1 N:Name M:<" + printer.model + "> S:" + printer.serial + " ",
                      "C:7\r\n"};
    }
    if (port_.onWrite) port_.onWrite(port_.written.back());
    return port_.writeStatus;
  }
  uint32_t ReadUnless(const std::function<bool()>&, uint8_t* buffer, uint32_t timeoutMs) override {
    return Read(buffer, timeoutMs);
  }
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override {
    EXPECT_EQ(timeoutMs, 3000U);
    port_.reading = true;
    if (port_.onRead) port_.onRead();
    port_.reading = false;
    if (port_.blocks.empty()) return kTransferTimeout;
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

 private:
  Port& port_;
  size_t count_ = 0;
  std::string last_;  // identity of the printer opened last
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_CONNECT_SCRIPTED_CONNECTOR_H_
