// Calendar time of the simulated printers. UTC, so that it does not depend on where they run.
#ifndef NUVSIM_CALENDAR_H_
#define NUVSIM_CALENDAR_H_

#include <chrono>
#include <string>

namespace nuvsim {

using CalendarTime = std::chrono::system_clock::time_point;

// As on the wire: 20261121T103000. Parts of a second are left out. From 1970 on.
std::string FormatTime(CalendarTime time);

}  // namespace nuvsim

#endif  // NUVSIM_CALENDAR_H_
