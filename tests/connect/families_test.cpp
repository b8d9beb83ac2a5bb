// Jobs of dental and Android printers and the three firmware updates against simulated printers,
// byte for byte; and what a printer that fails in the middle leaves behind.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "job/file_digest.h"
#include "nuvconnect/NuvConnect5.h"
#include "nuvfile/print_file_writer.h"
#include "tests/connect/job_lab.h"

namespace Nuv::Connect {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using Strings = std::vector<std::string>;

std::vector<uint8_t> Bytes(size_t size, uint8_t seed) {
  std::vector<uint8_t> bytes(size);
  for (size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<uint8_t>((i * 7 + i / 251 + seed) & 0xFFU);
  return bytes;
}

std::string Text(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

nuvsim::Simulator* g_simulator = nullptr;

class FamiliesTest : public JobLab {
 protected:
  void SetUp() override {
    JobLab::SetUp();
    if (IsSkipped()) return;
    folder = std::filesystem::path(::testing::TempDir()) / TestName();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    contents.project_id = "P7";
    contents.material_id = "Resin A";
    contents.aes_key = Bytes(32, 200);
    contents.l101 = nuvfile::FrameRecord("L101", Bytes(30000, 1));
    contents.l102 = nuvfile::FrameRecord("L102", Bytes(5, 2));
    contents.l103 = nuvfile::FrameRecord("L103", Bytes(20000, 3));
    contents.preview = Bytes(25000, 4);
  }

  int Send(const std::string& machineId) {
    contents.machine_id = machineId;
    // A job that did not open leaves its file open, and Windows lets nobody replace an open file.
    path = folder / (std::to_string(sent++) + ".nuv");
    const nuvfile::Status written =
        nuvfile::WritePrintFile(path.string(), contents, nuvfile::LinesOf(lines));
    EXPECT_TRUE(written.ok()) << written.message();
    return framework.SendPrintFile(path.wstring(), nullptr);
  }
  std::string Wire() const {
    std::string bytes;
    for (const std::string& line : lines) bytes += line + "\r\n";
    return bytes;
  }
  void ExpectJobArrived() {
    EXPECT_TRUE(simulator->WaitUntil([&] { return simulator->JobBytes().size() >= Wire().size(); },
                                     seconds(10)));
    EXPECT_EQ(simulator->JobBytes(), Wire());
  }
  // "kind=bytes" of all that came besides lines, incomplete ones with a "!".
  Strings Received() const {
    Strings items;
    for (const nuvsim::ReceivedItem& item : simulator->Received()) {
      items.push_back(item.kind + "=" + std::to_string(item.receivedBytes) +
                      (item.complete ? "" : "!"));
    }
    return items;
  }
  bool ImageArrived(const std::string& kind, size_t bytes) {
    return simulator->WaitUntil([&] { return simulator->ReceivedBytes(kind).size() >= bytes; },
                                seconds(10));
  }
  nuvsim::ReceivedItem Last() const { return simulator->Received().back(); }
  std::string DigestOfFile() const {
    const std::optional<FileDigest> digest = DigestOf(path.string());
    std::string text;
    for (const uint8_t byte : digest->sha1) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", unsigned{byte});
      text += digits;
    }
    return text;
  }

  std::filesystem::path folder;
  std::filesystem::path path;  // of the last print file
  int sent = 0;
  nuvfile::PrintFileContents contents;
  Strings lines{"G1 X1", "", "G1 X2 Y3"};
};

TEST_F(FamiliesTest, DentalJobArrivesByteForByte) {
  StartConnected(Printer("3DPSNKGB3WTW00001", "BEGO VARSEO XS"));
  const size_t before = simulator->Requests().size();
  ASSERT_EQ(Send("3DPSNKGB3WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_THAT(Received(), ElementsAre("key=32", "L102=5", "L103=20000"));
  EXPECT_EQ(simulator->ReceivedBytes("key"), Text(Bytes(32, 200)));
  EXPECT_EQ(simulator->ReceivedBytes("L102"), Text(Bytes(5, 2)));
  EXPECT_EQ(simulator->ReceivedBytes("L103"), Text(Bytes(20000, 3)));
  Strings codes;
  for (const std::string& request : simulator->Requests()) codes.push_back(request.substr(0, 4));
  codes.erase(codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(before));
  EXPECT_THAT(codes, ElementsAre("F102", "F354", "F353", "F367", "F355", "F103", "F117", "F117"));
  EXPECT_TRUE(errors().empty());
  // What a file lacks is not sent, and the job arrives all the same.
  for (auto* part : {&contents.aes_key, &contents.l103}) part->clear();
  simulator->SetIdle(0);
  ASSERT_EQ(Send("3DPSNKGB3WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_EQ(Last().kind, "L102");
}

TEST_F(FamiliesTest, AndroidJobArrivesByteForByte) {
  StartConnected(Printer("A1", "Fabrix150 xP"));
  const size_t before = simulator->Requests().size();
  ASSERT_EQ(Send("3DPSNKGC3WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_THAT(Received(), ElementsAre(::testing::StartsWith("announcement=0"), "thumbnail=25000",
                                      "L101=30000", "L102=5", "L103=20000"));
  const nuvsim::ReceivedItem announcement = simulator->Received().front();
  EXPECT_EQ(announcement.sha1, DigestOfFile());
  EXPECT_EQ(announcement.name, path.filename().string());
  EXPECT_EQ(announcement.announcedBytes, std::filesystem::file_size(path));
  EXPECT_EQ(simulator->ReceivedBytes("thumbnail"), Text(Bytes(25000, 4)));
  EXPECT_EQ(simulator->ReceivedBytes("L101"), Text(Bytes(30000, 1)));
  EXPECT_EQ(simulator->ReceivedBytes("L103"), Text(Bytes(20000, 3)));
  Strings codes;
  for (const std::string& request : simulator->Requests()) codes.push_back(request.substr(0, 4));
  codes.erase(codes.begin(), codes.begin() + static_cast<std::ptrdiff_t>(before));
  EXPECT_THAT(codes, ElementsAre("F102", "F508", "F501", "F500", "F503"));
  // Without any of it.
  for (auto* part : {&contents.preview, &contents.l101, &contents.l102, &contents.l103}) {
    part->clear();
  }
  simulator->SetIdle(0);
  ASSERT_EQ(Send("3DPSNKG43WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_EQ(Last().kind, "announcement");
}

TEST_F(FamiliesTest, PrinterThatIsBusyGetsNoHeaderBytes) {
  auto printer = Printer("A1", "Fabrix150 xP");
  printer.layerTime = std::chrono::hours(1);
  StartConnected(printer);
  ASSERT_EQ(Send("3DPSNKGC3WTW00001"), NUV_OK);
  ExpectJobArrived();
  const size_t items = simulator->Received().size();
  contents.preview.clear();
  EXPECT_EQ(Send("3DPSNKGC3WTW00001"), NUV_PRINTER_REFUSED);
  EXPECT_EQ(errors().back(), std::pair(29, 500));
  EXPECT_EQ(simulator->Received().size(), items + 1) << "the announcement only";
  EXPECT_EQ(simulator->CommandText(), "") << "nothing was taken for a line";
}

// The printer fails in the opening exchange; the next job arrives all the same.
TEST_F(FamiliesTest, FailuresInTheOpeningEndTheJobAndTheNextOneArrives) {
  StartConnected(Printer("3DPSNKGB3WTW00001", "BEGO VARSEO XS"));
  for (const int code : {367, 103}) {
    SCOPED_TRACE(code);
    simulator->SetIdle(0);
    Commits("silent,count=3,code=" + std::to_string(code));
    EXPECT_EQ(Send("3DPSNKGB3WTW00001"), NUV_FAILED);
    EXPECT_EQ(errors().back(), std::pair(-1, code));
    simulator->ClearFaults(0);
  }
  simulator->SetIdle(0);
  Commits("buffer-full,count=1");
  EXPECT_EQ(Send("3DPSNKGB3WTW00001"), NUV_NO_BUFFER_SPACE);
  simulator->SetIdle(0);
  EXPECT_EQ(Send("3DPSNKGB3WTW00001"), NUV_OK);
  ExpectJobArrived();
}

TEST_F(FamiliesTest, PrinterThatIsFullWaitsAndThenTakesTheJob) {
  StartConnected(Printer("A1", "Fabrix120 xP"));
  Commits("buffer-full,count=4");
  EXPECT_EQ(Send("3DPSNKG93WTW00001"), NUV_OK);
  ExpectJobArrived();
}

TEST_F(FamiliesTest, EngineImageArrivesWithItsDigest) {
  StartConnected(Printer("A1"));
  for (const size_t size : {size_t{10232}, size_t{10240}, size_t{10241}, size_t{50000}}) {
    SCOPED_TRACE(size);
    const std::vector<uint8_t> image = Bytes(size, 'F');
    ASSERT_EQ(framework.SetFWUpdateFileInfo_Engine(static_cast<uint32_t>(size), "engine v2.bin"),
              NUV_OK);
    ASSERT_EQ(framework.SendFWData(image), NUV_OK);
    ASSERT_TRUE(ImageArrived("engine", size));
    EXPECT_EQ(simulator->ReceivedBytes("engine"), Text(image));
    EXPECT_TRUE(Last().complete);
    EXPECT_TRUE(Last().started);
    EXPECT_EQ(Last().name, "engine v2.bin");
    int status = -1;
    EXPECT_EQ(framework.GetPrinterStatus(&status), NUV_OK) << "lines are commands again";
  }
  EXPECT_EQ(framework.SetFWUpdateFileInfo_Engine(0, "empty.bin"), NUV_PRINTER_REFUSED);
  EXPECT_EQ(errors().back(), std::pair(29, 141));
  EXPECT_EQ(framework.SendFWData({}), NUV_OK);
  EXPECT_EQ(framework.SetFWUpdateFileInfo_Engine(1, "two\r\nlines"), NUV_FAILED);
}

TEST_F(FamiliesTest, AndroidImageArrivesAndIsStarted) {
  StartConnected(Printer("A1", "Mekrix3400 xP"));
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_PRINTER_REFUSED) << "without an image";
  for (const size_t size : {size_t{1}, size_t{10232}, size_t{10240}, size_t{50000}}) {
    SCOPED_TRACE(size);
    const std::vector<uint8_t> image = Bytes(size, 'L');
    ASSERT_EQ(framework.SetFWUpdateFileInfo_Android(7, static_cast<uint32_t>(size), "board.img"),
              NUV_OK);
    ASSERT_EQ(framework.SendFWDataAndroid(image), NUV_OK);
    EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_OK);
    EXPECT_EQ(simulator->ReceivedBytes("android"), Text(image));
    EXPECT_TRUE(Last().started);
    EXPECT_EQ(Last().name, "board.img");
  }
  EXPECT_THAT(simulator->Requests(), ::testing::Contains("F506 S7 A50000 Cboard.img"));
}

TEST_F(FamiliesTest, PanelImageArrivesAndIsEnded) {
  StartConnected(Printer("A1", "Moldrix100 xP"));
  EXPECT_EQ(framework.StartFWUpdateFileInfo_LCM("p"), NUV_PRINTER_REFUSED) << "no Android board";
  StartConnected(Printer("A2", "Fabrix150 xP"));
  std::string answer = "old";
  EXPECT_EQ(framework.FinishFWUpdateFileInfo_LCM(answer), NUV_PRINTER_REFUSED);
  EXPECT_EQ(answer, "");
  std::vector<uint8_t> image = Bytes(NUV_PANEL_IMAGE_BYTES + 500, 9);
  ASSERT_EQ(framework.StartFWUpdateFileInfo_LCM("panel.bin"), NUV_OK);
  ASSERT_EQ(framework.SendFWPanelData(image), NUV_OK);
  EXPECT_EQ(framework.FinishFWUpdateFileInfo_LCM(answer), NUV_OK);
  EXPECT_EQ(answer, "Done");
  image.resize(NUV_PANEL_IMAGE_BYTES);
  EXPECT_EQ(simulator->ReceivedBytes("panel"), Text(image)) << "and no further";
  image.pop_back();
  const size_t items = simulator->Received().size();
  EXPECT_EQ(framework.SendFWPanelData(image), NUV_FAILED);
  EXPECT_EQ(simulator->Received().size(), items);
}

// The host cancels, or the printer goes away, in the middle of an image: it is incomplete, is not
// started, and the next one arrives.
TEST_F(FamiliesTest, ImageThatStopsInTheMiddleIsNotStarted) {
  StartConnected(Printer("A1", "Fabrix150 xP"));
  g_simulator = simulator.get();
  const std::vector<uint8_t> image = Bytes(100000, 'x');
  const auto announce = [&] {
    return framework.SetFWUpdateFileInfo_Android(1, static_cast<uint32_t>(image.size()), "b.img");
  };
  for (const int cancelAt : {0, 1, 9}) {
    SCOPED_TRACE(cancelAt);
    ASSERT_EQ(announce(), NUV_OK);
    g_asked = 0;
    g_cancelAt = cancelAt;
    EXPECT_EQ(framework.SendFWDataAndroid(image), NUV_CANCELLED);
    ASSERT_TRUE(framework.GetConnect()->OpenDevice());
    EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_PRINTER_REFUSED);
    EXPECT_EQ(Last().receivedBytes, 10232U * static_cast<size_t>(cancelAt));
  }
  ASSERT_EQ(announce(), NUV_OK);
  g_asked = 0;
  framework.RegisterSendDataCancelCallback([] {
    if (g_asked++ == 4) g_simulator->Unplug(0);
    return false;
  });
  EXPECT_EQ(framework.SendFWDataAndroid(image), NUV_OK) << "nothing tells it";
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_FAILED);
  EXPECT_FALSE(Last().complete);
  simulator->Replug(0);
  ASSERT_TRUE(framework.GetConnect()->OpenDevice());
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_PRINTER_REFUSED);
  framework.RegisterSendDataCancelCallback(nullptr);
  ASSERT_EQ(announce(), NUV_OK);
  ASSERT_EQ(framework.SendFWDataAndroid(image), NUV_OK);
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_OK);
}

}  // namespace
}  // namespace Nuv::Connect
