// Private to the library: the wall clock broken down into calendar fields
// for the clock constructors of Date, Time and DateTime (defined in
// Date.cpp, where the calendar arithmetic lives).
#pragma once

#include <cstdint>

namespace Zantor::Detail {

struct CalendarInstant
{
    std::int64_t year;
    unsigned int month, day, hour, minute, second, millisecond;
};

// Now, in UTC or in the machine's local time zone. Returns false when the
// local time cannot be had; now is then unspecified.
bool ReadCalendarClock(bool local, CalendarInstant& now) noexcept;
// The local time zone's offset from UTC now, in seconds east; 0 when the
// platform cannot tell.
std::int32_t GetLocalOffsetSeconds() noexcept;

} // namespace Zantor::Detail
