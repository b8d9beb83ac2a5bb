#include "format.h"

#include <gtest/gtest.h>

#include <utility>

#include "utf8.h"

namespace NuvCtl {
namespace {

TEST(PrintableTest, LeavesTextAndReplacesWhatSteersATerminal) {
  const std::pair<const char*, const char*> kRows[] = {
      {"Zähne 牙 😀", "Zähne 牙 😀"},
      {"a\x1b[2Jb\r\n\t\x7f", "a?[2Jb????"},
      {"\xC2\x9B;2J", "?;2J"},                                           // ESC [ in one character
      {"\xE2\x80\xAE-gpj.exe", "?-gpj.exe"},                             // right-to-left override
      {"\xC0\xAF|\xED\xA0\x80|\xF4\x90\x80\x80|\xFF", "??|???|????|?"},  // not UTF-8
      {"cut \xE7\x89", "cut ??"},
  };
  for (const auto& [text, expected] : kRows) EXPECT_EQ(Printable(text), expected);
}

TEST(ColumnsTest, CountsAndCutsWholeCharacters) {
  EXPECT_EQ(DisplayWidth("Z\u00E4\u7259"), 4U);
  EXPECT_EQ(FirstColumns("Z\u00E4\u7259x", 3), "Z\u00E4");
  EXPECT_TRUE(IsUtf8("Z\u00E4\u7259"));
  EXPECT_FALSE(IsUtf8("Z\xE4hne"));
}

TEST(FormatTest, RoundsDownWithinTheUnit) {
  using Row = std::pair<int64_t, const char*>;
  const Row kBytes[] = {{-5, "0 B"},
                        {999, "999 B"},
                        {999999, "999.9 kB"},
                        {1000000, "1.0 MB"},
                        {2147483647, "2.1 GB"}};
  for (const auto& [bytes, expected] : kBytes) EXPECT_EQ(FormatBytes(bytes), expected);
  const Row kDurations[] = {{-1, "0:00"}, {59, "0:59"}, {723, "12:03"}, {3723, "1:02:03"}};
  for (const auto& [seconds, expected] : kDurations) EXPECT_EQ(FormatDuration(seconds), expected);
}

TEST(FormatStampTest, ReadsTheTwoFormsAndLeavesTheRest) {
  EXPECT_EQ(FormatStamp("20270131") + FormatStamp("-"), "2027-01-31");
  EXPECT_EQ(FormatStamp("20261121T103005"), "2026-11-21 10:30:05");
  for (const char* other : {"20261121T10300", "2027-1-1", ""}) EXPECT_EQ(FormatStamp(other), other);
}

TEST(TableTest, AlignsByColumnsOnTheTerminal) {
  EXPECT_EQ(FormatTable({"N", "NAME", "LAST"}, {{"0", "牙", "x"}, {"10", "", "\x1b"}, {"2"}}),
            "N   NAME  LAST\n"
            "0   牙    x\n"
            "10  -     ?\n"
            "2   -     -\n");
  EXPECT_EQ(FormatFields({{"State", "idle"}, {"Error number", ""}}),
            "State:         idle\n"
            "Error number:  -\n");
}

}  // namespace
}  // namespace NuvCtl
