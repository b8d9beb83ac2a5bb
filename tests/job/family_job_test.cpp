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

std::string Frame(const std::string& payload) {
  std::string header = "L105";
  for (int shift = 0; shift < 32; shift += 8) {
    header += static_cast<char>((payload.size() >> shift) & 0xFFU);
  }
  return header + payload;
}

class BegoJobTest : public JobTest {
 public:
  void SetUp() override {
    JobTest::SetUp();
    files.machineId = "3DPSNKGB3WTW00001";
    files.lines = {"abc"};
    files.key = std::string(32, '\x80');
    files.l102 = "L102....2";
    files.l103 = "L103....33";
    for (const char* code : {"F354", "F353", "F355", "F367"}) {
      printer.Always(code, std::string(code) + " OK");
    }
  }
};

TEST_F(BegoJobTest, KeyAndRecordsStandBetweenOpeningAndData) {
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_THAT(printer.Wire(),
              ElementsAre("F102\r\n", "F354\r\n", "F353\r\n", "F367 =job.txt\r\n",
                          "F355 MResin A=P7\r\n", "F103 " + std::string(kOpening) + "\r\n",
                          files.key, files.l102, files.l103, "F117\r\n", "F117\r\n", "abc\r\n"));
  EXPECT_EQ(files.closes, 1);
}

TEST_F(BegoJobTest, PartsThatTheFileLacksAreLeftOut) {
  files.key.clear();
  files.l103.clear();
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(printer.Data(), files.l102 + "abc\r\n");
}

struct FaultRow {
  const char* name;
  std::function<void(JobTest&)> fault;
  int32_t result;
  const char* last;  // the last that went over the wire
  std::vector<std::pair<int, int>> errors;
};

std::function<void(JobTest&)> Silent(const char* code) {
  return [code](JobTest& t) { t.printer.Always(code, ""); };
}

TEST_F(BegoJobTest, FailuresEndTheJobBeforeItsData) {
  const FaultRow rows[] = {
      {"102", Silent("F102"), NUV_FAILED, "F102\r\n", {{-1, 102}}},
      {"354", Silent("F354"), NUV_FAILED, "F354\r\n", {{-1, 354}}},
      {"353", Silent("F353"), NUV_FAILED, "F353\r\n", {{-1, 353}}},
      {"367", Silent("F367"), NUV_FAILED, "F367 =job.txt\r\n", {{-1, 367}}},
      {"355", Silent("F355"), NUV_FAILED, "F355 MResin A=P7\r\n", {{-1, 355}}},
      {"no free buffer",
       [](JobTest& t) { t.HasFreeBuffer(0); },
       NUV_NO_BUFFER_SPACE,
       "F117\r\n",
       {}},
      {"lost at the key",
       [](JobTest& t) {
         t.printer.writesUntilFailure = 0;
         t.printer.Always("F117", "");
       },
       NUV_NO_BUFFER_SPACE,
       "F117\r\n",
       {{-1, 117}}},
      {"damaged key",
       [](JobTest& t) { t.files.damaged = &t.files.key; },
       NUV_FILE_NOT_READABLE,
       nullptr,
       {}},
      {"damaged record",
       [](JobTest& t) { t.files.damaged = &t.files.l103; },
       NUV_FILE_NOT_READABLE,
       nullptr,
       {}},
  };
  for (const FaultRow& row : rows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    SetUp();
    row.fault(*this);
    EXPECT_EQ(Send(), row.result);
    if (row.last == nullptr) {
      EXPECT_THAT(printer.Wire(), IsEmpty());
    } else {
      EXPECT_EQ(printer.Wire().back(), row.last);
    }
    EXPECT_EQ(g_host.errors, row.errors);
    EXPECT_EQ(printer.Data().find("abc"), std::string::npos);
    files = FakePrintFiles();
  }
}

// A printer that refuses the opening would take key and records for commands.
TEST_F(BegoJobTest, RefusedOpeningSendsNoRawBytes) {
  printer.Always("F103", "F103 NG S:1");
  EXPECT_EQ(Send(), NUV_PRINTER_REFUSED);
  EXPECT_EQ(printer.Blocks(), 0U);
  EXPECT_THAT(g_host.errors, ElementsAre(std::pair(29, 103)));
  // Refusals of the others only show in what the printer answers next.
  printer.Always("F103", "F103 OK");
  printer.Always("F353", "F353 NG S:1");
  EXPECT_EQ(Send(), NUV_OK);
}

class AndroidJobTest : public JobTest {
 public:
  void SetUp() override {
    JobTest::SetUp();
    WriteFile("abc");  // the digest is of the file, whatever the library reads from it
    files.machineId = "3DPSNKG93WTW00001";
    files.lines = {"abc"};
    files.preview = "picture";
    files.l101 = "L101....";
    files.l102 = "L102....2";
    files.l103 = "L103....33";
    for (const char* code : {"F508", "F501", "F500"}) {
      printer.Always(code, std::string(code) + " OK");
    }
    printer.Always("F503", "F503 OK S:1000000");
  }
};

TEST_F(AndroidJobTest, DigestThumbnailOpeningRecordsData) {
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_THAT(
      printer.Wire(),
      ElementsAre("F102\r\n", "F508 S3 Va9993e364706816aba3e25717850c26c9cd0d89d N<job.txt>\r\n",
                  "F501 S7 N<Thumbnail.png>\r\n", Frame("picture"),
                  "F500 " + std::string(kOpening) + " N<job.txt>\r\n",
                  "L101....L102....2L103....33", "F503\r\n", "abc\r\n"));
}

TEST_F(AndroidJobTest, ThumbnailAndRecordsAreCutIntoBlocks) {
  files.preview = std::string(10232, 'p') + std::string(10232, 'q') + "r";
  files.l101 = std::string(10239, '1');
  files.l102 = "2";
  files.l103 = "3";
  EXPECT_EQ(Send(), NUV_OK);
  const Strings& wire = printer.Wire();
  ASSERT_EQ(wire.size(), 11U);
  EXPECT_EQ(wire[3], Frame(std::string(10232, 'p')));
  EXPECT_EQ(wire[4], Frame(std::string(10232, 'q')));
  EXPECT_EQ(wire[5], Frame("r"));
  EXPECT_EQ(wire[7], std::string(10239, '1') + "2");
  EXPECT_EQ(wire[8], "3");
  EXPECT_EQ(clock.SleptMs(), 100) << "only the data line's";
  EXPECT_EQ(g_host.updates.size(), 1U);
}

TEST_F(AndroidJobTest, WithoutPreviewAndRecordsNoneIsAnnounced) {
  files.preview.clear();
  files.l101.clear();
  files.l102.clear();
  files.l103.clear();
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(printer.Data(), "abc\r\n");
  for (const std::string& sent : printer.Wire()) EXPECT_NE(sent.substr(0, 4), "F501");
}

// What the printer refuses, and what it is sent all the same.
TEST_F(AndroidJobTest, RefusedAnnouncementIsNotFollowedByItsBytes) {
  printer.Always("F508", "F508 NG");
  printer.Always("F501", "F501 NG");
  EXPECT_EQ(Send(), NUV_OK);
  EXPECT_EQ(printer.Data(), "L101....L102....2L103....33abc\r\n");
  EXPECT_THAT(g_host.errors, IsEmpty());
  printer.Always("F500", "F500 NG S:1");
  const size_t before = printer.Blocks();
  EXPECT_EQ(Send(), NUV_PRINTER_REFUSED);
  EXPECT_EQ(printer.Blocks(), before);
  EXPECT_THAT(g_host.errors, ElementsAre(std::pair(29, 500)));
}

TEST_F(AndroidJobTest, FailuresEndTheJobBeforeItsData) {
  const FaultRow rows[] = {
      {"102", Silent("F102"), NUV_FAILED, "F102", {{-1, 102}}},
      {"508", Silent("F508"), NUV_FAILED, "F508", {{-1, 508}}},
      {"501", Silent("F501"), NUV_FAILED, "F501", {{-1, 501}}},
      {"500", Silent("F500"), NUV_FAILED, "F500", {{-1, 500}}},
      {"damaged preview",
       [](JobTest& t) { t.files.damaged = &t.files.preview; },
       NUV_FILE_NOT_READABLE,
       nullptr,
       {}},
      {"damaged record",
       [](JobTest& t) { t.files.damaged = &t.files.l101; },
       NUV_FILE_NOT_READABLE,
       nullptr,
       {}},
      {"lost in the records",
       [](JobTest& t) { t.printer.writesUntilFailure = 1; },
       NUV_WRITE_FAILED,
       "F503",
       {}},
  };
  for (const FaultRow& row : rows) {
    SCOPED_TRACE(row.name);
    printer = ScriptedChannel();
    files = FakePrintFiles();
    SetUp();
    row.fault(*this);
    EXPECT_EQ(Send(), row.result);
    if (row.last == nullptr) {
      EXPECT_THAT(printer.Wire(), IsEmpty());
    } else {
      EXPECT_EQ(printer.Wire().back().substr(0, 4), row.last);
    }
    EXPECT_EQ(g_host.errors, row.errors);
    EXPECT_EQ(printer.Data().find("abc"), std::string::npos);
  }
}

// The oddest that the system's files may have.
#if defined(_WIN32)
constexpr char kOddName[] = "a b=;.nuv";
#else
constexpr char kOddName[] = "a b<=:.nuv";
#endif

TEST_F(AndroidJobTest, NamesThatWouldBreakTheLineAreRefused) {
  for (const auto& [machineId, name, result] :
       {std::tuple("3DPSNKG43WTW00001", "a>b.nuv", NUV_FILE_NOT_READABLE),
        {"3DPSNKG43WTW00001", "a\nF104 S2", NUV_FILE_NOT_READABLE},
        {"3DPSNKGB3WTW00001", "a\rb", NUV_FILE_NOT_READABLE},
        {"3DPSNKG43WTW00001", kOddName, NUV_OK}}) {
    SCOPED_TRACE(name);
    printer = ScriptedChannel();
    SetUp();
    files.machineId = machineId;
    path = std::filesystem::path(::testing::TempDir()) / name;
    WriteFile("abc");
    EXPECT_EQ(Send(), result);
    EXPECT_EQ(printer.Wire().empty(), result != NUV_OK);
    std::filesystem::remove(path);
  }
}

}  // namespace
}  // namespace Nuv::Connect
