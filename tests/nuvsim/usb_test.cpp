// The simulated printers as USB printers, as a USB/IP host has them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fixture.h"
#include "usbip_client.h"

namespace NuvSim {
namespace {

using testing::ElementsAre;

constexpr int kStalled = -32;
constexpr int kUnlinked = -104;

// One simulated printer on its bus, and a host that has it.
class UsbTest : public testing::Test {
 protected:
  UsbTest() {
    SimulatorConfig config;
    config.printers = {LoopbackPrinter(), LoopbackPrinter()};
    config.printers[0].usbId = "11F1:2605";
    config.printers[0].model = "BEGO VARSEO XS";
    config.printers[1].serial = "S2";
    config.usbipPort = 0;
    sim = std::make_unique<Simulator>(config);
    sim->Start();
    host = Host();
    EXPECT_EQ(host->Import("1-1"), 0u);
  }

  std::unique_ptr<UsbipClient> Host() { return std::make_unique<UsbipClient>(sim->UsbipPort()); }

  void Give(const std::string& bytes) {
    host->Write(bytes);
    EXPECT_EQ(host->Next().length, bytes.size());
  }

  // The host before, if any, is gone; the next one has the printer.
  void Reattach() {
    host.reset();
    ASSERT_TRUE(sim->WaitUntil([&] { return !sim->Status().attached; }, kPatience));
    host = Host();
    EXPECT_EQ(host->Import("1-1"), 0u);
    EXPECT_EQ(host->Ask("F102"), "F102 OK S:0");
  }

  // The data of so many reads, posted one after the other.
  std::vector<std::string> ReadAll(size_t count, uint32_t length) {
    std::vector<std::string> data;
    for (size_t i = 0; i < count; ++i) host->Read(length);
    for (size_t i = 0; i < count; ++i) data.push_back(host->Next().data);
    return data;
  }

  std::unique_ptr<Simulator> sim;
  std::unique_ptr<UsbipClient> host;
};

TEST_F(UsbTest, ListTellsEveryPluggedPrinter) {
  const auto other = Host();
  const std::string request = FromHex("0111 8005 00000000");
  other->SendBytes(request);
  EXPECT_EQ(ToHex(other->ReadBytes(12)), "011100050000000000000002");
  const std::string printers = other->ReadBytes(2 * 316);
  EXPECT_EQ(printers.substr(256, 4), std::string("1-1\0", 4));
  // Bus, device, speed, IDs, release, class, configuration, counts; the interface's class.
  EXPECT_EQ(ToHex(printers.substr(288)).substr(0, 56),
            "000000010000000200000003"
            "11f12605"
            "0100"
            "000000"
            "000101"
            "07010200");
  EXPECT_EQ(printers.substr(316 + 256, 4), std::string("1-2\0", 4));
  EXPECT_EQ(ToHex(printers.substr(316 + 292, 12)), "000000030000000311f12601");
  sim->Unplug(0);
  other->SendBytes(request);
  EXPECT_EQ(ToHex(other->ReadBytes(12)), "011100050000000000000001");
  EXPECT_EQ(other->ReadBytes(316).substr(256, 3), "1-2");
}

const struct {
  const char *what, *setup;
  const char* data;  // null: stalled
} kControls[] = {
    {"Device", "8006 0001 0000 1200", "1201 0002 000000 40 f111 0526 0001 010203 01"},
    {"DeviceCutToEight", "8006 0001 0000 0800", "1201 0002 000000 40"},
    {"Configuration", "8006 0002 0000 ff00",
     "0902 2000 01 01 00 c0 01  0904 00 00 02 07 01 02 00  0705 01 02 0002 00  0705 82 02 0002 00"},
    {"Languages", "8006 0003 0000 ff00", "0403 0904"},
    {"Serial", "8006 0303 0904 ff00",
     "1c03 5300 4900 4d00 3000 3000 3000 3000 3000 3000 3000 3000 3000 3100"},
    {"UnknownText", "8006 0403 0904 ff00", nullptr},
    {"Qualifier", "8006 0006 0000 0a00", "0a06 0002 000000 40 01 00"},
    {"OtherDescriptor", "8006 000f 0000 0500", nullptr},
    {"DeviceStatus", "8000 0000 0000 0200", "0100"},
    {"GetConfiguration", "8008 0000 0000 0100", "00"},
    {"SetConfiguration", "0009 0100 0000 0000", ""},
    {"SetInterface", "010b 0000 0000 0000", ""},
    {"ClearHalt", "0201 0000 8200 0000", ""},
    {"DeviceId", "a100 0000 0000 0e00",
     "003d"
     "4d46473a6e757673696d3b43"},  // MFG:nuvsim;C
    {"PortStatus", "a101 0000 0000 0100", "18"},
    {"SoftReset", "2102 0000 0000 0000", ""},
    {"UnknownClassRequest", "a107 0000 0000 0100", nullptr},
    {"VendorRequest", "c001 0000 0000 0100", nullptr},
};

TEST_F(UsbTest, ControlTransfersAreAnswered) {
  for (const auto& row : kControls) {
    SCOPED_TRACE(row.what);
    const uint32_t sequence = host->Control(row.setup);
    const UsbipReply reply = host->Next();
    EXPECT_EQ(reply.sequence, sequence);
    EXPECT_EQ(reply.status, row.data == nullptr ? kStalled : 0);
    EXPECT_EQ(ToHex(reply.data), ToHex(FromHex(row.data == nullptr ? "" : row.data)));
  }
}

TEST_F(UsbTest, AnswersEndReadAfterRead) {
  const struct {
    const char* fault;
    uint32_t length;  // of each read
    std::vector<std::string> data;
  } kRows[] = {
      {"", 8, {"F102 OK ", "S:0\r\n"}},
      {"", 13, {"F102 OK S:0\r\n"}},
      {"zero-packet", 1024, {"", "F102 OK S:0\r\n"}},
      {"late,ms=5", 1024, {"F102 OK S:0\r\n"}},
      {"pieces,bytes=6,ms=1", 1024, {"F102 O", "K S:0\r", "\n"}},
      {"oversized,kib=1",
       512,
       {"F102 OK S:0 X:" + std::string(498, 'x'), std::string(512, 'x'), "\r\n"}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.fault + (" in reads of " + std::to_string(row.length)));
    if (*row.fault != '\0') sim->InjectFault(0, ParseFault(row.fault));
    Give("F102\r\n");
    EXPECT_EQ(ReadAll(row.data.size(), row.length), row.data);
    EXPECT_EQ(host->Ask("F197"), "F197 OK N:Simulated printer");
  }
}

TEST_F(UsbTest, ReadsWaitForAnswersInTheirOrder) {
  const uint32_t reads[] = {host->Read(), host->Read()};
  Give("F102\r\nF157\r\n");
  for (const auto& [read, data] :
       {std::pair(reads[0], "F102 OK S:0\r\n"), {reads[1], "F157 OK I0 S0\r\n"}}) {
    const UsbipReply reply = host->Next();
    EXPECT_EQ(reply.sequence, read);
    EXPECT_EQ(reply.data, data);
  }
}

TEST_F(UsbTest, UnlinkedReadTakesNoAnswer) {
  const uint32_t read = host->Read();
  const uint32_t unlink = host->Unlink(read);
  const UsbipReply unlinked = host->Next();
  EXPECT_EQ(unlinked.command, 4u);
  EXPECT_EQ(unlinked.sequence, unlink);
  EXPECT_EQ(unlinked.status, kUnlinked);
  EXPECT_EQ(host->Ask("F102"), "F102 OK S:0");
  host->Unlink(read);  // long over
  EXPECT_EQ(host->Next().status, 0);
}

TEST_F(UsbTest, NakHoldsWhatIsSentUntilCleared) {
  sim->InjectFault(0, ParseFault("nak,skip=1"));
  EXPECT_EQ(host->Ask("F102"), "F102 OK S:0");
  const uint32_t given = host->Write("F105\r\n");
  const uint32_t first = host->Write("F1");
  host->Write("57\r\n");
  host->Unlink(given);
  EXPECT_EQ(host->Next().status, kUnlinked);
  EXPECT_EQ(sim->Totals().faultsApplied, 1u);
  sim->ClearFaults(0);
  EXPECT_EQ(host->Next().sequence, first);
  EXPECT_EQ(host->Next().length, 4u);
  EXPECT_EQ(ReadAll(1, 1024).front(), "F157 OK I0 S0\r\n");
  EXPECT_THAT(sim->Requests(), ElementsAre("F102", "F157"));
}

TEST_F(UsbTest, AStallOutlastsTheTransferThatItCut) {
  sim->InjectFault(0, ParseFault("stall,code=102"));
  const uint32_t cut = host->Write("F102\r\nF157\r\n");
  EXPECT_EQ(ReadAll(1, 1024).front(), "F102 OK S:0\r\n");
  host->Unlink(cut);
  EXPECT_EQ(host->Next().status, kUnlinked);
  const uint32_t next = host->Write("F301\r\n");
  const uint32_t control = host->Control("a101 0000 0000 0100");
  EXPECT_EQ(host->Next().sequence, control);  // would come behind a transfer that is taken
  sim->ClearFaults(0);
  EXPECT_EQ(host->Next().sequence, next);
}

TEST_F(UsbTest, UnpluggedEndsTheImportUntilReplugged) {
  host->Read();
  sim->Unplug(0);
  EXPECT_TRUE(host->HasEnded());
  EXPECT_FALSE(sim->Status().attached);
  const auto refused = Host();
  EXPECT_EQ(refused->Import("1-1"), 4u);
  EXPECT_TRUE(refused->HasEnded());
  sim->Replug(0);
  Reattach();
}

TEST_F(UsbTest, OneHostHasAPrinterAndTheNextGetsItAfterwards) {
  EXPECT_TRUE(sim->Status().attached);
  EXPECT_EQ(Host()->Import("1-1"), 2u);
  EXPECT_EQ(Host()->Import(std::string(40, '1')), 4u);
  const auto other = Host();
  EXPECT_EQ(other->Import("1-2"), 0u);
  Give("G1 unfinished");
  Reattach();
  EXPECT_EQ(sim->CommandText(), "G1 unfinished");
}

TEST_F(UsbTest, DropTakesThePrinterFromTheBusOnceTheAnswersBeforeAreRead) {
  sim->InjectFault(0, ParseFault("drop,code=157"));
  Give("F102\r\nF157\r\n");
  EXPECT_EQ(ReadAll(1, 1024).front(), "F102 OK S:0\r\n");
  EXPECT_TRUE(host->HasEnded());
  Reattach();
}

std::string Reads(uint32_t count) {
  std::string bytes;
  for (uint32_t i = 1; i <= count; ++i) bytes += Submit(i, 1, 2, 1024);
  return bytes;
}

TEST_F(UsbTest, HostileHostsAreEndedAndTheNextIsServed) {
  const struct {
    const char* what;
    bool isImported;  // before it begins
    std::string bytes;
    bool breaksOff = false;  // the host ends it, in place of the simulator
  } kRows[] = {
      {"wrong version", false, FromHex("0100 8005 00000000")},
      {"text", false, "GET / HTTP/1.1\r\n\r\n"},
      {"unknown command", true, Big32(7) + std::string(44, '\0')},
      {"huge write", true, Submit(1, 0, 1, 0xffffffff)},
      {"just too long", true, Submit(1, 0, 1, (1u << 20) + 1)},
      {"isochronous", true, Submit(1, 1, 2, 16, std::string(8, '\0'), 1000000)},
      {"too many pending", true, Reads(257)},
      {"header cut short", true, Submit(1, 0, 1, 8).substr(0, 47), true},
      {"data cut short", true, Submit(1, 0, 1, 8) + "F102", true},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    if (!row.isImported) host = Host();
    host->SendBytes(row.bytes);
    EXPECT_TRUE(row.breaksOff || host->HasEnded());
    Reattach();
  }
}

}  // namespace
}  // namespace NuvSim
