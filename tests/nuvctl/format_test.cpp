#include <gtest/gtest.h>

#include "table.h"
#include "text.h"

namespace nuvctl {
namespace {

TEST(PrintableTest, LeavesTextAndReplacesWhatSteersATerminal) {
  const struct {
    const char *text, *expected;
  } kRows[] = {
      {"Zähne 牙 😀", "Zähne 牙 😀"},
      {"a\x1b[2Jb\r\n\t\x7f", "a?[2Jb????"},
      {"\xC2\x9B"  // the one-character form of ESC [
       "2J",
       "?2J"},
      {"\xE2\x80\xAE"  // right-to-left override
       "gpj.exe",
       "?gpj.exe"},
      {"\xC0\xAF|\xED\xA0\x80|\xF4\x90\x80\x80|\xFF", "??|???|????|?"},  // not UTF-8
      {"cut \xE7\x89", "cut ??"},
  };
  for (const auto& row : kRows) EXPECT_EQ(Printable(row.text), row.expected);
}

TEST(WideFromUtf8Test, KeepsEveryCharacterAndRefusesWhatIsNotUtf8) {
  EXPECT_EQ(WideFromUtf8("Zähne 牙 😀.nuv"), L"Zähne 牙 \U0001F600.nuv");
  EXPECT_EQ(WideFromUtf8("Z\xE4hne"), std::nullopt);
}

TEST(FormatTest, RoundsDownWithinTheUnit) {
  const struct {
    int64_t bytes;
    const char* expected;
  } kBytes[] = {{-5, "0 B"},
                {999, "999 B"},
                {1000, "1.0 kB"},
                {999999, "999.9 kB"},
                {1000000, "1.0 MB"},
                {2147483647, "2.1 GB"},
                {1000000000, "1.0 GB"},
                {5000000000000, "5000.0 GB"}};
  for (const auto& row : kBytes) EXPECT_EQ(FormatBytes(row.bytes), row.expected);
  const struct {
    int64_t seconds;
    const char* expected;
  } kDurations[] = {{-1, "0:00"}, {59, "0:59"}, {723, "12:03"}, {3723, "1:02:03"}};
  for (const auto& row : kDurations) EXPECT_EQ(FormatDuration(row.seconds), row.expected);
}

TEST(FormatStampTest, ReadsTheTwoFormsAndLeavesTheRest) {
  const struct {
    const char *stamp, *expected;
  } kRows[] = {{"20270131", "2027-01-31"},
               {"20261121T103005", "2026-11-21 10:30:05"},
               {"20261121 103005", "20261121 103005"},
               {"20261121T10300", "20261121T10300"},
               {"2027-1-1", "2027-1-1"},
               {"2026112T1030055", "2026112T1030055"},
               {"-", ""},
               {"", ""}};
  for (const auto& row : kRows) EXPECT_EQ(FormatStamp(row.stamp), row.expected);
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
}  // namespace nuvctl
