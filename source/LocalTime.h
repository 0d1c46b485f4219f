// Private to the library: the platform part of the local clock
// (source/<platform>/LocalTime.cpp), used by the date and time field values.
#pragma once

#include <cstdint>
#include <ctime>

namespace Zantor::Detail {

// Breaks seconds since 1970-01-01 00:00:00 UTC down into the machine's local
// calendar time (time zone and daylight saving applied). Returns false when
// the platform cannot; local is then unspecified.
bool ToLocalCalendarTime(std::int64_t seconds, std::tm& local) noexcept;

} // namespace Zantor::Detail
