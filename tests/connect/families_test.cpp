// Jobs of dental and Android printers and the three firmware updates against simulated printers,
// byte for byte.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nuvconnect/NuvConnect5.h"
#include "tests/connect/job_lab.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

std::vector<uint8_t> Bytes(size_t size, uint8_t seed) {
  std::vector<uint8_t> bytes(size);
  for (size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<uint8_t>((i * 7 + i / 251 + seed) & 0xFFU);
  return bytes;
}

std::string Text(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

using Parts = std::vector<std::pair<std::string, std::string>>;

class FamiliesTest : public JobLab {
 protected:
  FamiliesTest() {
    contents.projectId = "P7";
    contents.materialId = "Resin A";
    contents.aesKey = Bytes(32, 200);
    contents.l101 = NuvFile::FrameRecord("L101", Bytes(30000, 1));
    contents.l102 = NuvFile::FrameRecord("L102", Bytes(5, 2));
    contents.l103 = NuvFile::FrameRecord("L103", Bytes(20000, 3));
    contents.preview = Bytes(25000, 4);
  }

  int Send(const std::string& machineId) {
    WritePrintFile(machineId);
    return JobLab::Send();
  }
  // Kind and bytes of all that came besides lines, incomplete ones with a "!".
  Parts Received() const {
    Parts parts;
    for (const NuvSim::ReceivedItem& item : simulator->Received()) {
      parts.emplace_back(item.kind + (item.complete ? "" : "!"),
                         simulator->ReceivedBytes(item.kind));
    }
    return parts;
  }
  NuvSim::ReceivedItem Last() const { return simulator->Received().back(); }
};

TEST_F(FamiliesTest, DentalJobArrivesByteForByte) {
  StartConnected(Printer("3DPSNKGB3WTW00001", "BEGO VARSEO XS"));
  ASSERT_EQ(Send("3DPSNKGB3WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_EQ(Received(), (Parts{{"key", Text(Bytes(32, 200))},
                               {"L102", Text(Bytes(5, 2))},
                               {"L103", Text(Bytes(20000, 3))}}));
  EXPECT_TRUE(Errors().empty());
}

TEST_F(FamiliesTest, AndroidJobArrivesByteForByte) {
  StartConnected(Printer("A1", "Fabrix150 xP"));
  ASSERT_EQ(Send("3DPSNKGC3WTW00001"), NUV_OK);
  ExpectJobArrived();
  EXPECT_EQ(Received(), (Parts{{"announcement!", ""},
                               {"thumbnail", Text(Bytes(25000, 4))},
                               {"L101", Text(Bytes(30000, 1))},
                               {"L102", Text(Bytes(5, 2))},
                               {"L103", Text(Bytes(20000, 3))}}));
  const NuvSim::ReceivedItem announcement = simulator->Received().front();
  EXPECT_EQ(announcement.sha1.size(), 40U);
  EXPECT_EQ(announcement.name, path.filename().string());
  EXPECT_EQ(announcement.announcedBytes, std::filesystem::file_size(path));
}

TEST_F(FamiliesTest, EngineImageArrivesWithItsDigest) {
  StartConnected(Printer("A1"));
  const std::vector<uint8_t> image = Bytes(50000, 'F');
  ASSERT_EQ(framework.SetFWUpdateFileInfo_Engine(50000, "engine v2.bin"), NUV_OK);
  ASSERT_EQ(framework.SendFWData(image), NUV_OK);
  ASSERT_TRUE(Becomes([&] { return simulator->ReceivedBytes("engine").size() >= image.size(); }));
  EXPECT_EQ(simulator->ReceivedBytes("engine"), Text(image));
  EXPECT_TRUE(Last().complete && Last().started);
  EXPECT_EQ(Last().name, "engine v2.bin");
  int status = -1;
  EXPECT_EQ(framework.GetPrinterStatus(&status), NUV_OK) << "lines are commands again";
  EXPECT_EQ(framework.SetFWUpdateFileInfo_Engine(0, "empty.bin"), NUV_PRINTER_REFUSED);
  EXPECT_EQ(Errors().back(), std::pair(29, 141));
  EXPECT_EQ(framework.SendFWData({}), NUV_OK);
  EXPECT_EQ(framework.SetFWUpdateFileInfo_Engine(1, "two\r\nlines"), NUV_FAILED);
}

TEST_F(FamiliesTest, AndroidImageArrivesAndIsStarted) {
  StartConnected(Printer("A1", "Mekrix3400 xP"));
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_PRINTER_REFUSED) << "without an image";
  const std::vector<uint8_t> image = Bytes(50000, 'L');
  ASSERT_EQ(framework.SetFWUpdateFileInfo_Android(7, 50000, "board.img"), NUV_OK);
  ASSERT_EQ(framework.SendFWDataAndroid(image), NUV_OK);
  EXPECT_EQ(framework.StartFWUpgradeProcess(), NUV_OK);
  EXPECT_EQ(simulator->ReceivedBytes("android"), Text(image));
  EXPECT_TRUE(Last().started);
  EXPECT_EQ(Last().name, "board.img");
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
  ASSERT_EQ(framework.StartFWUpdateFileInfo_LCM("panel.bin"), NUV_OK);
  EXPECT_EQ(framework.SendFWPanelData(image), NUV_OK) << "no byte too many";
  EXPECT_EQ(framework.FinishFWUpdateFileInfo_LCM(answer), NUV_OK);
  image.pop_back();
  const size_t items = simulator->Received().size();
  EXPECT_EQ(ToldBy([&] { EXPECT_EQ(framework.SendFWPanelData(image), NUV_FAILED); }),
            "[NKG]panel image: 21503 bytes given, 21504 needed; nothing sent\n");
  EXPECT_EQ(simulator->Received().size(), items);
}

}  // namespace
}  // namespace Nuv::Connect
