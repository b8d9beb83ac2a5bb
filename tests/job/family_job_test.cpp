// The openings of dental and Android printers: what goes over the wire, in which order.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/job/job_fixture.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kOpening[] =
    "S3 L12 T0.050000 R90 V7.500000 C1.500000 E8.000000 H6.000000 Y2.500000 U3.000000 P80.000000";

constexpr char kBego[] = "3DPSNKGB3WTW00001";
constexpr char kAndroid[] = "3DPSNKG93WTW00001";

// A print file with all parts; the machine ID says which of them its printer is sent.
class FamilyJobTest : public JobTest {
 public:
  void SetUp() override {
    JobTest::SetUp();
    WriteFile("abc");  // the digest is of the file, whatever the library reads from it
    files.lines = {"abc"};
    files.key = std::string(32, '\x80');
    files.preview = "picture";
    files.l101 = "L101....";
    files.l102 = "L102....2";
    files.l103 = "L103....33";
    for (const char* code : {"F354", "F353", "F355", "F367", "F508", "F501", "F500"}) {
      printer.Always(code, std::string(code) + " OK");
    }
    printer.Always("F503", "F503 OK S:1000000");
  }
};

TEST_F(FamilyJobTest, DentalKeyAndRecordsStandBetweenOpeningAndData) {
  files.machineId = kBego;
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_THAT(printer.Wire(),
              ElementsAre("F102\r\n", "F354\r\n", "F353\r\n", "F367 =job.txt\r\n",
                          "F355 MResin A=P7\r\n", "F103 " + std::string(kOpening) + "\r\n",
                          files.key, files.l102, files.l103, "F117\r\n", "F117\r\n", "abc\r\n"));
  EXPECT_EQ(files.closes, 1);
}

TEST_F(FamilyJobTest, AndroidDigestThumbnailOpeningRecordsData) {
  files.machineId = kAndroid;
  files.l101 = std::string(10230, '1');
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_THAT(
      printer.Wire(),
      ElementsAre("F102\r\n", "F508 S3 Va9993e364706816aba3e25717850c26c9cd0d89d N<job.txt>\r\n",
                  "F501 S7 N<Thumbnail.png>\r\n", Frame("picture"),
                  "F500 " + std::string(kOpening) + " N<job.txt>\r\n", files.l101 + "L102....2L",
                  "103....33", "F503\r\n", "abc\r\n"));
}

// A printer that refuses the opening would take the bytes behind it for commands.
TEST_F(FamilyJobTest, FailuresEndTheJobBeforeItsData) {
  const struct {
    const char* name;
    const char* machineId;
    Fault fault;
    int result;
    const char* last;  // the code of the last command; empty: none was sent
    size_t blocks;     // of bytes that are no command
    std::vector<std::pair<int, int>> errors;
  } kRows[] = {
      {"layers", kZafelId, Argument("layers=2147483648"), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"minutes", kZafelId, Argument("print_minutes=1.2e2"), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"minutes", kBego, Argument("print_minutes=-1"), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"layers", kAndroid, Argument("layers="), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"102", kZafelId, Silent("F102"), NUV_FAILED, "F102", 0, {{-1, 102}}},
      {"102", kBego, Silent("F102"), NUV_FAILED, "F102", 0, {{-1, 102}}},
      {"354", kBego, Silent("F354"), NUV_FAILED, "F354", 0, {{-1, 354}}},
      {"353", kBego, Silent("F353"), NUV_FAILED, "F353", 0, {{-1, 353}}},
      {"367", kBego, Silent("F367"), NUV_FAILED, "F367", 0, {{-1, 367}}},
      {"355", kBego, Silent("F355"), NUV_FAILED, "F355", 0, {{-1, 355}}},
      {"refused", kBego, Refused("F103"), NUV_PRINTER_REFUSED, "F103", 0, {{29, 103}}},
      {"full", kBego, FreeBuffer(0), NUV_NO_BUFFER_SPACE, "F117", 3, {}},
      {"key not written", kBego, WritesFailAfter(0), NUV_WRITE_FAILED, "F103", 0, {}},
      {"record not written", kBego, WritesFailAfter(2), NUV_WRITE_FAILED, "L102", 2, {}},
      {"key", kBego, Damaged(&FakePrintFiles::key), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"record", kBego, Damaged(&FakePrintFiles::l103), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"102", kAndroid, Silent("F102"), NUV_FAILED, "F102", 0, {{-1, 102}}},
      {"508", kAndroid, Silent("F508"), NUV_FAILED, "F508", 0, {{-1, 508}}},
      {"501", kAndroid, Silent("F501"), NUV_FAILED, "F501", 0, {{-1, 501}}},
      {"500", kAndroid, Silent("F500"), NUV_FAILED, "F500", 1, {{-1, 500}}},
      {"refused", kAndroid, Refused("F500"), NUV_PRINTER_REFUSED, "F500", 1, {{29, 500}}},
      {"preview", kAndroid, Damaged(&FakePrintFiles::preview), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"record", kAndroid, Damaged(&FakePrintFiles::l101), NUV_FILE_NOT_READABLE, "", 0, {}},
      {"thumbnail not written", kAndroid, WritesFailAfter(0), NUV_WRITE_FAILED, "F501", 0, {}},
      {"records not written", kAndroid, WritesFailAfter(1), NUV_WRITE_FAILED, "F500", 1, {}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.machineId) + ": " + row.name);
    StartAnew();
    files.machineId = row.machineId;
    row.fault(*this);
    EXPECT_EQ(ToldResultOf(&JobTest::Send), row.result);
    EXPECT_EQ(printer.Wire().empty() ? "" : printer.Wire().back().substr(0, 4), row.last);
    EXPECT_EQ(printer.Blocks(), row.blocks);
    EXPECT_EQ(g_host.errors, row.errors);
    if (files.arguments == "layers=2147483648") {
      EXPECT_THAT(told, ::testing::HasSubstr("argument layers is \"2147483648\", not a whole"));
    }
  }
}

TEST_F(FamilyJobTest, AnArgumentThatIsNoWholeNumberIsNamed) {
  files.arguments = "layers=1x\n";
  EXPECT_THAT(ToldBy([&] { EXPECT_FALSE(OpeningOf(files)); }),
              ::testing::HasSubstr("argument layers is \"1x\", not a whole number"));
  files.arguments = "resin_ml=many\nexposure_s=1.5\n";
  EXPECT_EQ(OpeningOf(files)->resinMl, 0);
  EXPECT_EQ(OpeningOf(files)->exposureS, 1.5);
}

TEST_F(FamilyJobTest, OtherRefusalsCostOnlyTheBytesTheyAreAbout) {
  files.machineId = kBego;
  Refused("F353")(*this);
  EXPECT_EQ(Send(), NUV_OK);
  StartAnew();
  files.machineId = kAndroid;
  Refused("F508")(*this);
  Refused("F501")(*this);
  EXPECT_THAT(ToldBy([&] { EXPECT_EQ(Send(), NUV_OK); }),
              ::testing::HasSubstr("job: the printer refused the thumbnail\n"));
  EXPECT_EQ(printer.Data(), "L101....L102....2L103....33abc\r\n");
  EXPECT_THAT(g_host.errors, IsEmpty());
}

TEST_F(FamilyJobTest, WhatAFileLacksIsNotSent) {
  for (const char* const machineId : {kBego, kAndroid}) {
    StartAnew();
    files.machineId = machineId;
    for (const Part part : {&FakePrintFiles::key, &FakePrintFiles::preview, &FakePrintFiles::l101,
                            &FakePrintFiles::l102, &FakePrintFiles::l103}) {
      (files.*part).clear();
    }
    EXPECT_EQ(Send(), NUV_OK);
    EXPECT_EQ(printer.Data(), "abc\r\n");
    EXPECT_THAT(printer.Wire(), ::testing::Not(::testing::Contains(::testing::StartsWith("F501"))));
  }
}

// The oddest that the system's files may have, and what is told of the others.
#if defined(_WIN32)
constexpr char kOddName[] = "a b=;.nuv";
constexpr char kWorseName[] = "print file";  // there is none to read
#else
constexpr char kOddName[] = "a b<=:.nuv";
constexpr char kWorseName[] = "cannot be sent";
#endif

TEST_F(FamilyJobTest, NamesThatWouldBreakTheLineAreRefused) {
  for (const auto& [machineId, name, result] :
       {std::tuple(kAndroid, "a>b.nuv", NUV_FILE_NOT_READABLE),
        {kAndroid, "a\nF104 S2", NUV_FILE_NOT_READABLE},
        {kBego, "a\rb", NUV_FILE_NOT_READABLE},
        {kAndroid, kOddName, NUV_OK}}) {
    SCOPED_TRACE(name);
    StartAnew();
    files.machineId = machineId;
    path = std::filesystem::path(::testing::TempDir()) / name;
    WriteFile("abc");
    EXPECT_EQ(ToldResultOf(&JobTest::Send), result);
    EXPECT_EQ(told.find(kWorseName) == std::string::npos, result == NUV_OK);
    EXPECT_EQ(printer.Wire().empty(), result != NUV_OK);
    std::filesystem::remove(path);
  }
}

}  // namespace
}  // namespace Nuv::Connect
