// The search's part on USB, over a connector that follows a script.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "printer/device.h"
#include "printer/finder.h"
#include "printer/values.h"
#include "tests/connect/scripted_connector.h"

namespace {

using namespace Nuv::Printer;

class UsbFindTest : public ::testing::Test {
 protected:
  std::vector<nuv_identity> FindOnUsb() {
    Wishes wishes;
    wishes.network = false;
    CallLimits limits(nullptr, 10000, clock);
    return Find(wishes, limits, limits.End(), clock,
                [this] { return std::make_unique<Nuv::Connect::ScriptedConnector>(port); });
  }

  Nuv::Platform::Clock& clock = Nuv::Platform::SystemClock();
  Nuv::Connect::Port port;
};

TEST_F(UsbFindTest, AsksWhoIsThere) {
  port.printers = {{"U1"}};
  port.onWrite = [this](const std::string& line) {
    port.blocks = {line == "F101\r\n" ? "F101 OK V:1 N:Lab M:Fabrix150 xP S:U1 C:2\n"
                                      : "F197 NG\n"};
  };
  const std::vector<nuv_identity> found = FindOnUsb();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].link, NUV_LINK_USB);
  EXPECT_STREQ(found[0].address.text, "/dev/usb/lp0\\1");
  EXPECT_EQ(found[0].tcp_port, 0);
  EXPECT_EQ(found[0].contact, NUV_RESULT_OK);
  EXPECT_STREQ(found[0].serial.text, "U1");
  EXPECT_STREQ(found[0].name.text, "Lab");
  EXPECT_STREQ(found[0].firmware.text, "1");
  EXPECT_STREQ(found[0].controller.text, "2");
  EXPECT_EQ(found[0].nickname.flags, 0U) << "refused";
  EXPECT_EQ(port.open, -1) << "it is let go";
}

// Who gave up waiting leaves an answer on its way, which is not taken for the next one's.
TEST_F(UsbFindTest, AnAnswerOwedIsWaitedForBeforeTheNextCall) {
  port.printers = {{"U1"}};
  nuv_identity where = NUV_INIT(nuv_identity);
  where.link = NUV_LINK_USB;
  where.address = Text("/dev/usb/lp0\\1");
  const auto device = std::make_shared<Device>(
      where, clock, [this] { return std::make_unique<Nuv::Connect::ScriptedConnector>(port); });
  CallLimits cancelled(nullptr, 0, clock);
  port.onRead = [&] { cancelled.Raise(); };
  EXPECT_THROW(Session(device, cancelled).Run(102), Failure);
  port.onRead = nullptr;
  port.blocks = {"F102 OK S:1\n"};
  port.onWrite = [this](const std::string&) { port.blocks.push_back("F102 OK S:0\n"); };
  CallLimits next(nullptr, 0, clock);
  EXPECT_EQ(Session(device, next).Run(102).Number("S"), 0);
  device->End();
  EXPECT_EQ(port.open, -1);
}

TEST_F(UsbFindTest, LinksAreSearchedAsTheHostSays) {
  for (const int links :
       {0, 0 + NUV_LINK_NETWORK, 0 + NUV_LINK_USB, NUV_LINK_NETWORK + NUV_LINK_USB}) {
    nuv_search_options options = NUV_INIT(nuv_search_options);
    options.links = links;
    const Wishes wishes = WishesOf(&options);
    EXPECT_EQ(wishes.usb, links != NUV_LINK_NETWORK);
    EXPECT_EQ(wishes.network, links != NUV_LINK_USB);
  }
  EXPECT_TRUE(WishesOf(nullptr).usb && WishesOf(nullptr).network);
}

TEST_F(UsbFindTest, WhoCannotBeOpenedIsAPrinterToo) {
  port.printers = {{"U1", "", false}};
  const std::vector<nuv_identity> found = FindOnUsb();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].contact, NUV_RESULT_UNREACHABLE);
  port.printers.clear();
  EXPECT_TRUE(FindOnUsb().empty());
}

}  // namespace
