/* A time as somebody wrote it, before it is known which instant that is. */
#ifndef ORVANE_UTIL_WRITTEN_TIME_H
#define ORVANE_UTIL_WRITTEN_TIME_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvane::util {

struct WrittenTime {
    int64_t local_seconds = 0; // since 1970-01-01T00:00:00 on the clock that it was read from
    int32_t nanoseconds = 0;   // 0 to 10 ** 9: a fraction may round up to a whole second
    bool leap_second = false;  // written as second 60
    std::optional<int32_t> offset;
    std::string_view abbreviation; // of the zone, part of the text that was read; empty when none is given
};

/* Epoch seconds, written as a bare number. Digits alone that are a plausible day (yyyyddd, yyyymmdd) are
 * none. */
std::optional<double> written_number(std::string_view text);

/* A date, or a date and a time of day, in any of the forms known; nothing for anything else and for dates and
 * times that don't exist. */
std::optional<WrittenTime> written_time(std::string_view text);

} // namespace orvane::util

#endif
