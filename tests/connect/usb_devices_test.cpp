// Printers on USB as the framework sees them, over a connector that follows a script.

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "connect/local_link.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/connect/scripted_connector.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using Strings = std::vector<std::string>;

class UsbDevicesTest : public UsbHost {
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

  IConnect* const channel = framework.GetConnect();
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
  EXPECT_EQ(framework.GetDeviceInfo(value, NUV_KIND_USB, 0, NUV_DEVICE_SUPPLEMENTARY), NUV_OK);
  for (const int field : {NUV_DEVICE_IDENTIFIER - 1, NUV_DEVICE_SUPPLEMENTARY + 1}) {
    EXPECT_EQ(framework.GetDeviceInfo(value, NUV_KIND_USB, 0, field), NUV_NOT_FOUND);
  }

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

// Its printers have no serial number in the table.
TEST_F(UsbDevicesTest, OfAFailedListingTheFirstIsChosenByAnEmptySerialNumber) {
  port.printers = {{"D"}, {"E", "", false}};
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_USB, "D"), NUV_NOT_FOUND);
  EXPECT_EQ(port.open, -1);
  EXPECT_EQ(framework.ConnectDeviceBySN(NUV_KIND_USB, ""), NUV_OK);
  EXPECT_EQ(port.open, 0);
}

TEST_F(UsbDevicesTest, NoListingLeavesAPrinterOpen) {
  port.printers = {{"A", "BEGO VARSEO XS"}};
  static std::pair<int, int> told;
  framework.RegisterErrorCodeCallback([](int result, int code) { told = {result, code}; });
  EXPECT_EQ(List(), NUV_FAILED);
  EXPECT_EQ(told, std::pair(-1, 140));
  EXPECT_THAT(port.opened, ElementsAre("0"));
  EXPECT_EQ(port.open, -1) << "no answer to the serial query";
  port.printers.front().begoSerialReply = "F140 OK\r\n";
  int count = 7;
  EXPECT_THROW(framework.SearchUSBDevice(&count), std::out_of_range);
  EXPECT_EQ(count, 0);
  EXPECT_THAT(port.opened, ElementsAre("0", "0"));
  EXPECT_EQ(port.open, -1) << "thrown";
  port.printers.front().begoSerialReply = "F140 OK OK\r\n";
  EXPECT_EQ(List(), NUV_OK);
}

TEST_F(UsbDevicesTest, ListingGivesUpAfterManyPrintersOrMuchTime) {
  for (const auto& [attached, eachMinutes, listed] : {std::tuple(300, 0, 256), {5, 4, 3}}) {
    SCOPED_TRACE(attached);
    const auto count = static_cast<size_t>(listed);
    port.printers.assign(static_cast<size_t>(attached), {"A"});
    port.opened.clear();
    port.onOpen = [&, took = std::chrono::minutes(eachMinutes)] { clock.Advance(took); };
    EXPECT_EQ(ToldBy([&] { EXPECT_EQ(List(), NUV_OK); }),
              "[NKG]listing: given up after " + std::to_string(listed) + " of " +
                  std::to_string(attached) + " printers\n");
    EXPECT_EQ(port.opened.size(), count);
    EXPECT_EQ(serials.size(), count);
    EXPECT_EQ(Info(listed - 1, NUV_DEVICE_SERIAL), "A") << "those until then are in the table";
  }
}

TEST_F(UsbDevicesTest, ChoiceIsReopened) {
  EXPECT_EQ(dynamic_cast<IChannel*>(channel)->Reopen(), Reason::kUnreachable);
  EXPECT_FALSE(channel->SendBytes({'x'}));
  EXPECT_FALSE(channel->ChooseDevice(NUV_KIND_USB, -1));
  EXPECT_THAT(port.opened, ElementsAre("again")) << "a negative index never reaches the connector";
  port.printers = {{"A"}, {"B"}};
  ASSERT_TRUE(channel->EnumerateDevices(NUV_KIND_USB, serials));
  ASSERT_EQ(framework.ChooseDevice(NUV_KIND_USB, 1), NUV_OK);
  EXPECT_EQ(framework.ChooseDevice(NUV_KIND_USB, 2), NUV_CONNECTION_REFUSED);
  EXPECT_TRUE(channel->CloseDevice());
  EXPECT_FALSE(channel->SendBytes({'x'}));
  EXPECT_TRUE(channel->OpenDevice());
  EXPECT_EQ(port.open, 1);
  EXPECT_THAT(port.opened, ElementsAre("again", "1", "2", "again"));
}

TEST_F(UsbDevicesTest, AJobGoesOnOnItsOwnConnectionOnly) {
  UsbLink link(std::make_unique<ScriptedConnector>(port), Platform::SystemWaiter());
  port.printers = {{"A"}, {"B"}};
  for (int time = 0; time < 2; ++time) ASSERT_TRUE(link.EnumerateDevices(serials));
  EXPECT_EQ(serials.size(), 2U);
  EXPECT_EQ(link.Identity(0), "printer 0");
  EXPECT_EQ(link.Identity(1), "printer 1");
  EXPECT_EQ(link.Identity(-1), "");
  ASSERT_EQ(link.Open(0), Reason::kNone);
  EXPECT_EQ(link.Write(nullptr, 0, true), Reason::kNone);
  EXPECT_TRUE(port.written.empty()) << "nothing is queued";
  port.writeStatus = kTransferTimeout;
  EXPECT_EQ(link.Write(reinterpret_cast<const uint8_t*>("x"), 1, false), Reason::kNotTaken);
  EXPECT_EQ(link.ReadReply().reason, Reason::kSilence);
  const std::tuple<LinkState, bool, bool, Strings> rows[] = {
      {LinkState::kAlive, true, true, {"same"}},
      {LinkState::kAlive, false, true, {"again"}},
      {LinkState::kEnded, true, false, {}},
      {LinkState::kEnded, false, true, {"again"}},
      {LinkState::kClosed, true, true, {"same"}}};
  for (const auto& [look, inJob, opens, asked] : rows) {
    port.opened.clear();
    port.look = look;
    if (look == LinkState::kClosed) link.Close();
    EXPECT_EQ(link.Reopen(inJob), opens ? Reason::kNone : Reason::kUnreachable);
    EXPECT_EQ(port.opened, asked);
  }
}

TEST_F(UsbDevicesTest, AReplyIsWaitedForNoLongerThanItsCallerWants) {
  port.printers = {{"A"}};
  port.readMs = 2900;
  auto* const raw = dynamic_cast<NuvConnect*>(channel);
  ASSERT_TRUE(channel->EnumerateDevices(NUV_KIND_USB, serials));
  ASSERT_TRUE(channel->ChooseDevice(NUV_KIND_USB, 0));
  port.blocks = std::deque<std::string>(20, "x");
  const int64_t before = clock.SleptMs();
  EXPECT_EQ(channel->ReceiveReply(), std::string(10, 'x'));
  EXPECT_EQ(clock.SleptMs() - before, 30000);

  Platform::Interrupt interrupt;
  EXPECT_NE(raw->ReadAgain(&interrupt).text, "");
  interrupt.Raise();
  EXPECT_EQ(raw->ReadAgain(&interrupt).text, "");
  EXPECT_EQ(raw->ReadAgain(&interrupt).reason, Reason::kGivenUp);
  EXPECT_EQ(raw->Transact({"F9\r\n", false, &interrupt}).reason, Reason::kGivenUp);
  port.blocks = {"F9 OK\n"};
  EXPECT_EQ(channel->ReceiveReply(), "F9 OK") << "that was one call's";

  raw->GiveUp();
  port.blocks = {"F9 OK\n"};
  EXPECT_EQ(channel->ReceiveReply(), "");
  EXPECT_FALSE(channel->SendBytes({'x'}));
  EXPECT_FALSE(channel->ChooseDevice(NUV_KIND_USB, 0));
  EXPECT_EQ(raw->Reopen(), Reason::kGivenUp);
  EXPECT_EQ(raw->ConnectAddress("127.0.0.1"), Reason::kGivenUp);
}

TEST_F(UsbDevicesTest, RepliesComeOutWhole) {
  const std::string full(512, 'x');
  const std::tuple<const char*, std::deque<std::string>, std::string, size_t> rows[] = {
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
  ASSERT_EQ(framework.ChooseDevice(NUV_KIND_USB, 0), NUV_OK);
  port.blocks = {"unasked\n"};
  EXPECT_EQ(channel->ExecuteCommand(""), "");
  EXPECT_EQ(port.blocks.size(), 1U) << "nothing is read";
  EXPECT_FALSE(channel->SendBytes({}));
  for (const auto& [what, blocks, reply, left] : rows) {
    SCOPED_TRACE(what);
    port.blocks = blocks;
    EXPECT_EQ(channel->ReceiveReply(), reply);
    EXPECT_EQ(port.blocks.size(), left) << "not read";
    std::vector<uint8_t> last;
    EXPECT_EQ(channel->ReadLocalData(last), !reply.empty());
  }
  port.writeStatus = kTransferTimeout;
  port.blocks = {"F9 OK\n"};
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "") << "what was not sent has no reply";
  EXPECT_FALSE(channel->SendBytes({'x'}));
  port.writeStatus = 0;
  EXPECT_EQ(channel->ExecuteCommand("F9\r\n"), "F9 OK");
  channel->CloseDevice();
  EXPECT_EQ(dynamic_cast<IChannel*>(channel)->Send({}), Reason::kNone) << "no bytes need no link";
  std::vector<uint8_t> last;
  EXPECT_FALSE(channel->ReadLocalData(last));
}

}  // namespace
}  // namespace Nuv::Connect
