// What comes besides lines: job headers, thumbnails, firmware images.

#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fixture.h"
#include "nuvsim/control/language.h"

namespace NuvSim {
namespace {

using std::chrono::milliseconds;

constexpr char kDental[] = "BEGO VARSEO XS";
constexpr char kAndroid[] = "Fabrix120 xP";
constexpr char kDigest[] = "0123456789abcdef0123456789ABCDEF01234567";

// "<name><length, little-endian><payload>"
std::string Frame(const std::string& name, const std::string& payload) {
  std::string frame = name;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    frame += static_cast<char>(payload.size() >> shift & 0xff);
  }
  return frame + payload;
}

// Bytes with everything in them that could be taken for a line, a command or a frame.
std::string Image(size_t size) {
  const std::string pattern = std::string("\0\r\nF102\r\nL105\xff\n", 15);
  std::string image;
  while (image.size() < size) image += pattern + std::to_string(image.size());
  image.resize(size);
  return image;
}

std::string InFrames(const std::string& image) {
  std::string frames;
  for (size_t i = 0; i < image.size(); i += 10232) frames += Frame("L105", image.substr(i, 10232));
  return frames;
}

std::string OpenBoardJob(uint64_t bytes) {
  std::string request = JobRequest(bytes);
  request.replace(0, 4, "F500");
  return request.insert(request.size() - 2, " N<part = 1: one.nuv>");
}

// "key 32/32 complete|" and so on, with the blocks of what came in frames.
std::string Received(Bench& bench) {
  std::ostringstream items;
  for (const ReceivedItem& item : bench.sim->Received()) {
    items << item.kind << " " << item.receivedBytes << "/" << item.announcedBytes;
    for (const BlockRun& run : item.blocks) items << " " << run.count << "x" << run.bytes;
    items << (item.complete ? " complete" : "") << (item.started ? " started|" : "|");
  }
  return items.str();
}

// Begins like a command, as a key may.
const std::string kKey = std::string("F103\0 no command\r\nF102\r\nL102\0\r\n\n", 32);

struct WireRow {
  const char* what;
  const char* model;
  std::string sent;
  std::string answers;     // each with a "|" behind it
  std::string received;    // likewise
  std::string lines = "";  // of the job, or commands without one
};

std::vector<WireRow> WireRows() {
  const std::string l101 = Frame("L101", Image(300));
  const std::string l102 = Frame("L102", "material\r\nF102\r\n");
  const std::string l103 = Frame("L103", "");
  const std::string line = Frame("L102", "5") + "\r\n";
  const std::string dental = JobRequest(5);
  const std::string thumbnail = "F501 S20470 N<Thumbnail.png>\r\n";
  const std::string board = "F506 S1 A10240 Cboard one.img\r\n";
  return {
      {"DentalHeader", kDental, dental + kKey + l102 + l103 + "F117\r\nL102 5\r\n",
       "F103 OK|F117 OK S:65536|", "key 32/32 complete|L102 16/16 complete|L103 0/0 complete|",
       "L102 5\r\n"},
      {"DentalLineBehindTheKey", kDental, dental + kKey + "L1 0\r\nF117\r\n",
       "F103 OK|F117 OK S:65530|", "key 32/32 complete|", "L1 0\r\n"},
      {"DentalRefused", kDental, dental + "F117\r\n" + dental + "G1 X0\r\n",
       "F103 OK|F117 OK S:65536|F103 NG S:2|", "", "G1 X0\r\n"},
      {"OtherModelsHaveNoHeader", kAndroid, dental + line, "F103 OK|", "", line},
      {"BoardHeader", kAndroid, OpenBoardJob(5) + l101 + l102 + l103 + "F503\r\nG1 X0\r\n",
       "F500 OK|F503 OK S:65536|", "L101 300/300 complete|L102 16/16 complete|L103 0/0 complete|",
       "G1 X0\r\n"},
      {"Thumbnail", kAndroid, thumbnail + InFrames(Image(20470)) + "F102\r\n",
       "F501 OK|F102 OK S:0|", "thumbnail 20470/20470 2x10232 1x6 complete|"},
      {"ThumbnailCutShort", kAndroid, thumbnail + Frame("L105", "12345") + "F102\r\n",
       "F501 OK|F102 OK S:0|", "thumbnail 5/20470 1x5|"},
      {"FrameTooLong", kAndroid,
       thumbnail + Frame("L105", Image(10233)).substr(0, 8) + "\r\nF102\r\n",
       "F501 OK|F102 OK S:0|", "thumbnail 0/20470 1x10233|", "\r\n"},
      {"PrintFile", kAndroid, std::string("F508 S6750 V") + kDigest + " N<part one.nuv>\r\n",
       "F508 OK|", "announcement 0/6750|"},
      {"Panel", kAndroid, "F188 Spanel.bin\r\n" + Image(21504) + "F189\r\nF189\r\n",
       "F188 OK|F189 OK RDone|F189 OK RDone|", "panel 21504/21504 complete started|"},
      {"Android", kAndroid, board + InFrames(Image(10240)) + "F507\r\n", "F506 OK|F507 OK|",
       "android 10240/10240 1x10232 1x8 complete started|"},
      {"AndroidIncompleteAfterAGoodOne", kAndroid,
       "F506 S1 A4 Cb\r\n" + InFrames("1234") + board + "F507\r\n", "F506 OK|F506 OK|F507 NG|",
       "android 4/4 1x4 complete|android 0/10240|"},
      {"EngineWhileReceiving", "Zafel 1.0", JobRequest(5) + "F141 S40,engine 2.bin\r\nG1 X0\r\n",
       "F103 OK|F141 NG|", "", "G1 X0\r\n"},
  };
}

// In one piece and byte by byte.
TEST(WireTest, KeepsWhatIsNoLineApart) {
  for (const WireRow& row : WireRows()) {
    for (const size_t piece : {size_t{1} << 20, size_t{1}}) {
      if (piece == 1 && row.sent.size() > 12000) continue;
      SCOPED_TRACE(row.what + std::string(piece == 1 ? ", byte by byte" : ""));
      Bench bench(row.model);
      const auto client = bench.Connect();
      for (size_t i = 0; i < row.sent.size(); i += piece) {
        client->Send(row.sent.substr(i, piece));
      }
      std::string answers;
      while (answers.size() < row.answers.size()) answers += client->ReadLine() + "|";
      EXPECT_EQ(answers, row.answers);
      client->Close();
      ASSERT_TRUE(bench.WaitUntil([&] { return !bench.sim->Status().connected; }));
      EXPECT_EQ(Received(bench), row.received);
      const bool hasJob = !bench.sim->Jobs().empty();
      EXPECT_EQ(bench.sim->CommandText(), hasJob ? "" : row.lines);
      EXPECT_EQ(hasJob ? bench.sim->JobBytes() : "", hasJob ? row.lines : "");
    }
  }
}

TEST(ReceivedTest, HoldsTheBytesTheDigestAndTheNames) {
  Bench bench(kAndroid);
  const auto client = bench.Connect();
  client->Send("F501 S3 N<Thumbnail.png>\r\n" + Frame("L105", "abc"));
  EXPECT_EQ(client->ReadLine(), "F501 OK");
  client->Send(OpenBoardJob(9) + Frame("L101", "one") + "F107\r\nG1\r\nF141 S1,x\r\n");
  EXPECT_EQ(client->ReadLine(), "F500 OK");
  EXPECT_EQ(client->ReadLine(), "F107 OK L:4 T:10 R:part___1__one.nuv");
  EXPECT_EQ(client->ReadLine(), "F141 NG");
  const std::vector<ReceivedItem> items = bench.sim->Received();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].sha1, "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(items[0].name, "Thumbnail.png");
  EXPECT_EQ(items[0].file.filename(), "printer0-thumbnail.png");
  EXPECT_EQ(items[1].job, 1);
  EXPECT_EQ(bench.sim->ReceivedBytes("thumbnail"), "abc");
  EXPECT_EQ(bench.sim->ReceivedBytes("L101"), "one");
  EXPECT_EQ(bench.sim->ReceivedBytes("L102"), "");
  EXPECT_EQ(bench.sim->Status().freeBytes, 65536u - 4u) << "raw bytes do not fill the buffer";
  const auto told =
      nlohmann::json::parse(ControlSimulator(*bench.sim, R"({"do": "received"})").line);
  EXPECT_EQ(told["received"][0]["blocks"], nlohmann::json::parse("[[3, 1]]"));
  EXPECT_EQ(told["received"][1]["kind"], "L101");
}

TEST(IncompleteTest, EndsAfterASecondOfSilenceAndWithTheConnection) {
  const struct {
    const char* model;
    std::string opening;
    std::string begun;
    const char* received;
  } kRows[] = {
      {kDental, "F103 S5 L1 T1 R1 V1 C1 E1 H1 Y1 U1 P1", kKey.substr(0, 20), "key 20/32|"},
      {kAndroid, "F501 S9 N<Thumbnail.png>", Frame("L105", "12345").substr(0, 10),
       "thumbnail 2/9 1x5|"},
      {kAndroid, "F188 Sp", "F102\r\n", "panel 6/21504|"},
      {kAndroid, "F141 S9,x", "F102\r\n", "engine 6/9|"},
      {kAndroid, "F506 S1 A9 Cx", Frame("L105", "123") + "L105", "android 3/9 1x3|"},
  };
  for (const auto& row : kRows) {
    for (const bool isSilent : {true, false}) {
      SCOPED_TRACE(row.opening + (isSilent ? ", then silence" : ", then the end"));
      Bench bench(row.model);
      auto client = bench.Connect();
      EXPECT_EQ(client->Ask(row.opening), row.opening.substr(0, 4) + " OK");
      client->Send(row.begun.substr(0, 1));
      client->Send(row.begun.substr(1));
      if (isSilent) {
        ASSERT_TRUE(bench.WaitUntil([&] {
          return bench.sim->Totals().bytesReceived == row.opening.size() + 2 + row.begun.size();
        }));
        bench.Pass(milliseconds(999));
        EXPECT_EQ(bench.sim->Received().back().sha1, "") << "is still being received";
        bench.Pass(milliseconds(1));
      } else {
        client->Close();
        client = bench.Connect();
      }
      EXPECT_EQ(client->Ask("F197"), "F197 OK N:Simulated printer");
      EXPECT_EQ(Received(bench), row.received);
      EXPECT_NE(bench.sim->Received().back().sha1, "");
      EXPECT_EQ(bench.sim->CommandText(), "");
    }
  }
}

}  // namespace
}  // namespace NuvSim
