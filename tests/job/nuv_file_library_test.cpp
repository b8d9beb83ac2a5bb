// The adapter to the print-file library, bound to one that answers what a test wants.

#include "job/nuv_file_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLibrary>

#include "tests/job/print_file_library_fake.h"
#include "tests/support/environment.h"
#include "tests/support/told.h"

namespace Nuv::Connect {
namespace {

using ::testing::HasSubstr;
using Bytes = std::vector<uint8_t>;

class NuvFileLibraryTest : public ::testing::Test {
 protected:
  NuvFileLibraryTest() {
    SetEnvironment("NUVFILE_LIBRARY", FAKE_LIBRARY_FILE);
    EXPECT_TRUE(library.LoadLibrary());
    EXPECT_TRUE(library.LoadLibrary()) << "once";
    const auto get =
        reinterpret_cast<FakeAnswers* (*)()>(QLibrary::resolve(FAKE_LIBRARY_FILE, "Answers"));
    answers = get();
    *answers = FakeAnswers();
  }
  ~NuvFileLibraryTest() override { SetEnvironment("NUVFILE_LIBRARY", ""); }

  NuvFileLibrary library;
  FakeAnswers* answers = nullptr;
};

TEST_F(NuvFileLibraryTest, TextsAndBytesAreTakenOnlyAsTheyWereAnnounced) {
  const struct {
    std::pair<int, int> lengths;
    const char* taken;
    bool bytesAreRead;
  } rows[] = {{{3, 3}, "abc", true}, {{0, 0}, "", true},  {{-1, -1}, "", false},
              {{3, -1}, "", false},  {{3, 4}, "", false}, {{3, 2}, "", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.lengths.second);
    answers->text = answers->bytes = row.lengths;
    const std::string taken = row.taken;
    EXPECT_EQ(library.GetMachineID(), taken);
    EXPECT_EQ(library.GetProjectID(), taken);
    EXPECT_EQ(library.GetMaterialID(), taken);
    EXPECT_EQ(library.GetFileArguments(), taken);
    const std::pair<bool (NuvFileLibrary::*)(Bytes&), const char*> parts[] = {
        {&NuvFileLibrary::GetAESkey, "key"},
        {&NuvFileLibrary::ReadPreImg, "preview"},
        {&NuvFileLibrary::ReadL101, "record L101"},
        {&NuvFileLibrary::ReadL102, "record L102"},
        {&NuvFileLibrary::ReadL103, "record L103"}};
    for (const auto& [read, name] : parts) {
      Bytes bytes{'o', 'l', 'd'};
      const std::string told =
          ToldBy([&, of = read] { EXPECT_EQ((library.*of)(bytes), row.bytesAreRead); });
      EXPECT_EQ(std::string(bytes.begin(), bytes.end()), taken);
      EXPECT_EQ(
          told.find(name + std::string(" of the print file cannot be read: no reason given")) !=
              std::string::npos,
          !row.bytesAreRead);
    }
  }
}

TEST_F(NuvFileLibraryTest, ALineIsReadInTwoCallsAtMost) {
  const struct {
    std::vector<int> lengths;
    int length;  // -1: not read
    size_t reads;
  } rows[] = {{{0}, 0, 1},
              {{4096}, 4096, 1},
              {{4097, 4097}, 4097, 2},
              {{5000, 4000}, 4000, 2},
              {{5000, 6000, 6000}, -1, 2},
              {{-3}, -1, 1},
              {{5000, -3}, -1, 2}};
  for (const auto& row : rows) {
    answers->lines = row.lengths;
    answers->reads = 0;
    Bytes line;
    const std::string told =
        ToldBy([&] { EXPECT_EQ(library.ReadLayer(9, line), row.length >= 0); });
    EXPECT_EQ(told.find("data line 9 cannot be read") != std::string::npos, row.length < 0);
    EXPECT_EQ(answers->reads, row.reads);
    if (row.length >= 0) {
      EXPECT_EQ(line, Bytes(static_cast<size_t>(row.length), 'x'));
    }
  }
}

TEST_F(NuvFileLibraryTest, AFileIsOpenedAndClosed) {
  EXPECT_TRUE(library.Load("x"));
  library.Close();
  EXPECT_EQ(answers->closes, 1);
  EXPECT_EQ(library.GetModelDataSize(), 7);
  answers->load = 6;
  EXPECT_THAT(ToldBy([&] { EXPECT_FALSE(library.Load("x")); }),
              HasSubstr("print file x refused (6): no reason given"));
}

TEST_F(NuvFileLibraryTest, WhatIsNoSuchLibraryIsTold) {
  NuvFileLibrary other;
  SetEnvironment("NUVFILE_LIBRARY", "/nowhere/NuvFile");
  EXPECT_THAT(ToldBy([&] { EXPECT_FALSE(other.LoadLibrary()); }),
              HasSubstr("looked for: /nowhere/NuvFile\n"));
  SetEnvironment("NUVFILE_LIBRARY", OTHER_LIBRARY_FILE);
  EXPECT_THAT(ToldBy([&] { EXPECT_FALSE(other.LoadLibrary()); }),
              HasSubstr("has no function Load"));
}

}  // namespace
}  // namespace Nuv::Connect
