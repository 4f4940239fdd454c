#ifndef ORVANE_UTIL_CALENDAR_RANGE_H
#define ORVANE_UTIL_CALENDAR_RANGE_H

#include <cstdint>
#include <date/date.h>

namespace orvane::util {

constexpr int64_t day_seconds = 86400;

/* The years that times are written in and read from, by the Gregorian calendar throughout; year 0 is 1 BC. */
constexpr int first_year = -9999;
constexpr int last_year = 9999;

constexpr int64_t seconds_at_midnight(date::sys_days day)
{
    return static_cast<int64_t>(day.time_since_epoch().count()) * day_seconds;
}

/* Local times of those years, in seconds. */
constexpr int64_t first_calendar_second =
    seconds_at_midnight(date::sys_days{date::year{first_year} / date::January / 1});
constexpr int64_t last_calendar_second =
    seconds_at_midnight(date::sys_days{date::year{last_year} / date::December / 31}) + day_seconds - 1;

} // namespace orvane::util

#endif
