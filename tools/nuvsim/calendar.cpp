#include "nuvsim/calendar.h"

#include <cstdint>
#include <cstdio>

namespace nuvsim {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysIn(int month, int year) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeap(year) ? 1 : 0);
}

}  // namespace

// By hand, since the C library's conversion shares one buffer between threads.
std::string FormatTime(CalendarTime time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
  std::int64_t day = seconds / kSecondsPerDay;  // from 1 January 1970
  const auto second = static_cast<int>(seconds % kSecondsPerDay);
  int year = 1970;
  int month = 1;
  for (; day >= (IsLeap(year) ? 366 : 365); ++year) day -= IsLeap(year) ? 366 : 365;
  for (; day >= DaysIn(month, year); ++month) day -= DaysIn(month, year);
  char text[64];
  std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02d", year, month,
                static_cast<int>(day) + 1, second / 3600, second / 60 % 60, second % 60);
  return text;
}

}  // namespace nuvsim
