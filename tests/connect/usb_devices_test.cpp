// Printers on USB as the framework sees them, over a connector that follows a script.

#include <gmock/gmock.h>

#include <deque>
#include <functional>
#include <stdexcept>

#include "connect/connecting_framework.h"
#include "connect/usb_mode.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/support/manual_clock.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using Strings = std::vector<std::string>;

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
  std::function<void()> onOpen = [] {};
  std::vector<std::string> opened;  // the texts that Open was given
  std::deque<std::string> blocks;   // of the next reads; none left: time-out
  std::vector<std::string> written;
  uint32_t writeStatus = 0;
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
    port_.open = static_cast<int>(index);
    port_.onOpen();
    return true;
  }
  void Close() override { port_.open = -1; }
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
    return port_.writeStatus;
  }
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override {
    EXPECT_EQ(timeoutMs, 3000U);
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
};

class UsbDevicesTest : public ::testing::Test {
 protected:
  int List() {
    serials.clear();
    return framework.GetDeviceList(NUV_KIND_USB, serials, 0);
  }
  std::string Info(int index, int field) {
    std::string value;
    framework.GetDeviceInfo(value, NUV_KIND_USB, index, field);
    return value;
  }

  Port port;
  ManualClock clock;
  ConnectingFramework framework{clock, 0, std::make_unique<ScriptedConnector>(port)};
  Strings serials;
};

TEST_F(UsbDevicesTest, OnlyAListingThatSucceedsChangesTheTable) {
  port.printers = {{"A"}, {"B", "Moldrix150"}};
  ASSERT_EQ(List(), NUV_OK);
  EXPECT_THAT(serials, ElementsAre("A", "B"));
  EXPECT_EQ(Info(0, NUV_DEVICE_IDENTIFIER), "/dev/usb/lp0\\1");
  EXPECT_EQ(Info(1, NUV_DEVICE_IDENTIFIER), "/dev/usb/lp1\\1");
  EXPECT_EQ(Info(1, NUV_DEVICE_SERIAL), "B");
  EXPECT_EQ(port.open, -1) << "after a listing no printer is open";
  std::string value;
  EXPECT_EQ(framework.GetDeviceInfo(value, NUV_KIND_USB, 2, 0), NUV_NOT_FOUND);
  EXPECT_EQ(framework.GetDeviceInfo(value, NUV_KIND_NETWORK, 0, 0), NUV_NOT_FOUND);

  int count = -1;
  port.printers.push_back({"C"});
  EXPECT_EQ(framework.SearchUSBDevice(&count), NUV_OK);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_USB, "B"), NUV_OK);
  EXPECT_EQ(port.open, 1);

  port.printers = {{"D"}, {"E", "", false}};
  EXPECT_EQ(List(), NUV_CONNECTION_REFUSED);
  EXPECT_THAT(serials, ElementsAre("D")) << "those before the one that cannot be opened";
  port.printers.clear();
  EXPECT_EQ(framework.SearchUSBDevice(&count), NUV_NOT_FOUND);
  EXPECT_EQ(count, 0);
  port.walks = false;
  EXPECT_EQ(List(), NUV_NOT_FOUND);
  EXPECT_EQ(Info(1, NUV_DEVICE_SERIAL), "B") << "a failure leaves the table as it was";
}

TEST_F(UsbDevicesTest, NoListingLeavesAPrinterOpen) {
  port.printers = {{"A", "BEGO VARSEO XS"}};
  EXPECT_EQ(List(), NUV_FAILED);
  EXPECT_THAT(port.opened, ElementsAre("0"));
  EXPECT_EQ(port.open, -1) << "no answer to the serial query";
  port.printers.front().begoSerialReply = "F140 OK\r\n";
  EXPECT_THROW(List(), std::out_of_range);
  EXPECT_THAT(port.opened, ElementsAre("0", "0"));
  EXPECT_EQ(port.open, -1) << "thrown";
}

TEST_F(UsbDevicesTest, ListingGivesUpAfterManyPrintersOrMuchTime) {
  const struct {
    const char* what;
    size_t attached;
    std::chrono::minutes each;
    size_t listed;
  } kRows[] = {
      {"many printers", 300, std::chrono::minutes(0), 256},
      {"slow printers", 5, std::chrono::minutes(4), 3},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    port.printers.assign(row.attached, {"A"});
    port.opened.clear();
    port.onOpen = [&] { clock.Advance(row.each); };
    EXPECT_EQ(List(), NUV_OK);
    EXPECT_EQ(port.opened.size(), row.listed);
    EXPECT_EQ(serials.size(), row.listed);
    const int last = static_cast<int>(row.listed) - 1;
    EXPECT_EQ(Info(last, NUV_DEVICE_SERIAL), "A") << "those until then are in the table";
  }
}

TEST_F(UsbDevicesTest, ChoiceIsReopened) {
  IConnect* const channel = framework.GetConnect();
  EXPECT_FALSE(channel->OpenDevice());
  EXPECT_THAT(port.opened, ElementsAre()) << "a negative index never reaches the connector";
  port.printers = {{"A"}, {"B"}};
  ASSERT_TRUE(channel->EnumerateDevices(NUV_KIND_USB, serials));
  ASSERT_EQ(framework.ChooseDevice(NUV_KIND_USB, 1), NUV_OK);
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_USB, 2), NUV_CONNECTION_REFUSED);
  EXPECT_TRUE(channel->CloseDevice());
  EXPECT_FALSE(channel->SendBytes({'x'}));
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(port.open, 1);
  EXPECT_THAT(port.opened, ElementsAre("1", "2", "1"));
}

TEST_F(UsbDevicesTest, RepliesComeOutWhole) {
  const std::string full(512, 'x');
  const struct {
    const char* what;
    std::deque<std::string> blocks;
    std::string reply;
    size_t left;  // blocks not read
  } kRows[] = {
      {"one block", {"F9 OK\r\n", "next"}, "F9 OK\r", 1},
      {"split over packets", {"F9", " O", "K\r", "\n", "next"}, "F9 OK\r", 1},
      {"longer than a block", {full, full, "end\n"}, full + full + "end", 0},
      {"512 bytes and no more", {full}, full, 0},
      {"text ends at a zero byte", {std::string("F9\n\0junk", 8)}, "F9", 0},
      {"without a line feed", {"F9 OK", "", "next"}, "F9 OK", 1},
      {"two line feeds", {"F9 OK\n\n"}, "F9 OK\n", 0},
      {"nothing", {}, "", 0},
      {"a printer that babbles", std::deque<std::string>(200, full), std::string(65536, 'x'), 72},
  };
  port.printers = {{"A"}};
  ASSERT_EQ(List(), NUV_OK);
  IConnect* const channel = framework.GetConnect();
  ASSERT_EQ(framework.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    port.blocks = row.blocks;
    EXPECT_EQ(channel->ReceiveReply(), row.reply);
    EXPECT_EQ(port.blocks.size(), row.left);
    std::vector<uint8_t> last;
    EXPECT_EQ(channel->ReadLocalData(last), !row.reply.empty());
  }
  port.writeStatus = kTransferTimeout;
  port.blocks = {"F9 OK\n"};
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "") << "what was not sent has no reply";
  EXPECT_FALSE(channel->SendBytes({'x'}));
  port.writeStatus = 0;
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "F9 OK");
  channel->CloseDevice();
  std::vector<uint8_t> last;
  EXPECT_FALSE(channel->ReadLocalData(last));
}

}  // namespace
}  // namespace Nuv::Connect
