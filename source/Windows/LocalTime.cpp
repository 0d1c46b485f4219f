// Local calendar time on Windows: the C runtime's localtime_s, which takes
// its output first and answers an errno value (0 on success).
#include "LocalTime.h"

#include <time.h>

namespace Zantor::Detail {

bool ToLocalCalendarTime(std::int64_t seconds, std::tm& local) noexcept
{
    const time_t instant = static_cast<time_t>(seconds);
    return localtime_s(&local, &instant) == 0;
}

} // namespace Zantor::Detail
