// Local calendar time on Linux: the reentrant localtime_r.
#include "LocalTime.h"

#include <time.h>

namespace Zantor::Detail {

bool ToLocalCalendarTime(std::int64_t seconds, std::tm& local) noexcept
{
    const time_t instant = static_cast<time_t>(seconds);
    return localtime_r(&instant, &local) != nullptr;
}

} // namespace Zantor::Detail
