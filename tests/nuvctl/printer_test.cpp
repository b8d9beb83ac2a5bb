#include "command_fixture.h"

namespace NuvCtl {
namespace {

using PrinterTest = CommandTest;

TEST_F(PrinterTest, OpensThePrinterThatIsMeant) {
  const struct {
    int devices, listResult, openResult;
    const char* choice;
    int exit;
    std::string opened, code;
  } kRows[] = {
      {1, 0, 0, "", kDone, "0", ""},
      {0, 2, 0, "", kNoPrinter, "", "no_printer"},
      {0, 0, 0, " --index 0", kNoPrinter, "", "no_printer"},
      {3, 0, 0, "", kNoPrinter, "", "which_printer"},
      {3, 0, 0, " --serial SN2", kDone, "2", ""},
      {3, 0, 0, " --index 1", kDone, "1", ""},
      {3, 0, 0, " --index 3", kNoPrinter, "", "which_printer"},
      {3, 0, 0, " --address 10.0.0.2", kDone, "10.0.0.2", ""},
      {3, 0, 3, " --address 10.0.0.9", kNoPrinter, "10.0.0.9", "which_printer"},
      {3, 0, 3, " --address 10.0.0.2", kConnectionProblem, "10.0.0.2", "not_opened"},
      // One printer could not be opened while listing: the others stay usable by choice only.
      {1, 3, 0, "", kConnectionProblem, "", "listing_incomplete"},
      {1, 3, 0, " --serial SN0", kDone, "0", ""},
      {1, 3, 0, " --serial SN1", kConnectionProblem, "", "listing_incomplete"},
      {1, 3, 0, " --index 4", kDone, "4", ""},
      {1, 29, 0, "", kPrinterFailed, "", "refused"},
  };
  for (const auto& row : kRows) {
    SetUp();
    Devices(row.devices);
    g_fake.listResult = row.listResult;
    g_fake.openResult = row.openResult;
    const CommandRun run = Ends(Split(std::string("status") + row.choice), row.exit, row.code);
    EXPECT_EQ(g_fake.calls.size() > 1 ? g_fake.calls[1] : "",
              row.opened.empty() ? "" : "open " + row.opened);
    EXPECT_TRUE(run.closed);
  }
}

TEST_F(PrinterTest, UsbStandsInForTheNetwork) {
  const struct {
    const char* arguments;
    int listResult, openResult, exit;
    const char *opened, *told;
  } kRows[] = {
      {"--usb list", 0, 0, kDone, "", "1      /dev/usb/lp1  SN1"},
      {"status --usb --serial SN1", 0, 0, kDone, "open usb 1", "idle"},
      {"status --usb", 0, 0, kNoPrinter, "", "--serial or --index"},
      {"status --usb --index 0", 0, 3, kConnectionProblem, "open usb 0", "udev rule"},
      {"list --usb", 2, 0, kNoPrinter, "", "No printer was found on USB"},
      {"list --usb", 3, 0, kConnectionProblem, "", "udev rule"},
  };
  for (const auto& row : kRows) {
    SetUp();
    g_fake.kind = NUV_KIND_USB;
    g_fake.devices = {{"/dev/usb/lp0\\1", "SN0", "", ""}, {"/dev/usb/lp1\\1", "SN1", "", ""}};
    g_fake.listResult = row.listResult;
    g_fake.openResult = row.openResult;
    const CommandRun run = Both(Split(row.arguments));
    EXPECT_EQ(run.exit, row.exit) << row.arguments;
    EXPECT_NE((run.out + run.err).find(row.told), std::string::npos) << run.out << run.err;
    EXPECT_EQ(g_fake.calls.at(0), "usb list 3000");
    EXPECT_EQ(g_fake.calls.size() > 1 ? g_fake.calls[1] : "", row.opened);
  }
}

TEST_F(PrinterTest, ListsAllPrintersAlsoBeyondItsArray) {
  Devices(300);
  g_fake.devices[1][NUV_DEVICE_SERIAL] = "SN0";
  Ends({"info", "--serial", "SN0"}, kNoPrinter, "which_printer");  // two of them
  g_fake.calls.clear();
  EXPECT_NE(Both({"list", "--port", "7000", "--timeout", "50"}).out.find("299    10.0.0.299"),
            std::string::npos);
  EXPECT_EQ(document["printers"].size(), 300U);
  EXPECT_EQ(g_fake.calls, (std::vector<std::string>{"port 7000", "list 50"}));
  g_fake.listResult = 3;
  const CommandRun cut = Ends({"list"}, kConnectionProblem, "listing_incomplete");
  EXPECT_NE(cut.out.find("SN255"), std::string::npos);  // a result, so on standard output
  EXPECT_EQ(document["printers"].size(), 256U);
  EXPECT_FALSE(document["printers"][0].contains("address"));
}

TEST_F(PrinterTest, TellsWhatThePrinterIs) {
  EXPECT_NE(Both({"info"}).out.find("Serial number:  SN1\n"), std::string::npos);
  EXPECT_FALSE(document.contains("manufactured"));
  g_fake.devices[0][NUV_DEVICE_MODEL] = "BEGO VARSEO XS";
  EXPECT_NE(Both({"info"}).out.find("Manufactured:   2024-05-06\n"), std::string::npos);
  EXPECT_EQ(document["serial"], "BEGO-9");
  // An older firmware: the common record is better than nothing.
  g_fake.results[354] = NUV_PRINTER_REFUSED;
  Ends({"info"}, kDone);
  EXPECT_EQ(document["serial"], "SN1");
}

TEST_F(PrinterTest, TellsWhatThePrinterDoes) {
  constexpr char kErrorJson[] = R"({"state":"error","state_number":3,"error_number":17})";
  constexpr char kIdleJson[] = R"({"state":"idle","state_number":0})";
  constexpr char kPrintingText[] =
      "State:      printing\nLayer:      12 of 340\nProgress:   34 %\nTime left:  56 min\n";
  constexpr char kPrintingJson[] = R"({"state":"printing","state_number":1,"layer":12,"layers":340,
                                       "percent":34,"minutes_left":56})";
  const struct {
    std::vector<StateAnswer> states;
    int progressResult;
    const char *out, *json;
  } kRows[] = {
      {{kIdle}, 0, "State:  idle\n", kIdleJson},
      {{{0, 7, 0}}, 0, "State:  unknown (7)\n", R"J({"state":"unknown (7)","state_number":7})J"},
      {{kInError}, 0, "State:         error\nError number:  17\n", kErrorJson},
      {{kPrinting}, 0, kPrintingText, kPrintingJson},
      // The print ends between the two questions.
      {{kPrinting, kIdle}, NUV_NOT_PRINTING, "State:  idle\n", kIdleJson},
  };
  for (const auto& row : kRows) {
    SetUp();
    g_fake.states.answers = row.states;
    g_fake.progressResult = row.progressResult;
    EXPECT_EQ(Ends({"status"}, kDone).out, row.out);
    EXPECT_EQ(document, nlohmann::json::parse(row.json));
  }
  SetUp();
  g_fake.progressResult = NUV_PRINTER_REFUSED;
  g_fake.states.answers = {kPrinting};
  const CommandRun run = Ends({"status"}, kPrinterFailed, "refused");
  EXPECT_NE(run.err.find("(printer command 102)"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace NuvCtl
